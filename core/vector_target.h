// Which instruction set the vector kernels run on, chosen at run time.
#pragma once

namespace kesto {

// The value is the number of double lanes. `baseline` is what every machine of the architecture has: SSE2 on x86-64,
// Neon on arm64.
enum class VectorTarget { baseline = 2, avx2 = 4, avx512 = 8 };

constexpr VectorTarget all_vector_targets[] = {VectorTarget::baseline, VectorTarget::avx2, VectorTarget::avx512};

const char* name_of(VectorTarget target);

// Whether this machine can run it. AVX-512 is left out on macOS, which enables its registers lazily.
bool is_available(VectorTarget target);

// The widest available target, or the one that the environment variable KESTO_VECTOR_TARGET names. `ignored` (if not
// null) receives the variable's text when it names no target that this machine can run, else null.
VectorTarget chosen_vector_target(const char** ignored = nullptr);

}  // namespace kesto
