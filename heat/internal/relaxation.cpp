#include "heat/internal/relaxation.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/lanes/lanes.h"

namespace kesto {

namespace {

template <int W>
using Vector = typename Lanes<W>::Double;
template <int W>
using Mask = typename Lanes<W>::Bits;

// By reference, not by load(): the vectors are aligned, and knowing so lets SSE2 take them from memory within its
// arithmetic. Compilers let a vector stand for the doubles that it consists of.
template <int W>
KESTO_INLINE Vector<W>& vector_at(double* place) {
  return *reinterpret_cast<Vector<W>*>(place);
}

template <int W>
KESTO_INLINE Mask<W> load_mask(const std::uint64_t* from) {
  Mask<W> mask;
  __builtin_memcpy(&mask, from, sizeof mask);
  return mask;
}

// All bits of the lanes that have an interior line, 1 <= y - lane <= lines.
template <int W>
KESTO_INLINE Mask<W> live_lines(int y, int lines) {
  constexpr std::uint64_t o = 0, I = ~o;
  static constexpr std::uint64_t begin[] = {I, I, I, I, I, I, I, I, o, o, o, o, o, o, o, o};
  static constexpr std::uint64_t end[] = {o, o, o, o, o, o, o, o, I, I, I, I, I, I, I, I};
  return load_mask<W>(begin + 8 - std::min(y, 8)) & load_mask<W>(end + 8 - std::clamp(y - lines, 0, 8));
}

// What a turn carries from vector to vector, and from a row's end into the next row.
template <int W>
struct Turn {
  double* at;
  Vector<W> own, i_minus;
};

struct Strides {
  std::ptrdiff_t row, plane, source;
};

template <int W, bool masked>
KESTO_INLINE void advance(Turn<W>& turn, Vector<W> i_plus, const Strides& to, const RelaxationWeights& w,
                          Mask<W> live) {
  const auto neighbour = [&](std::ptrdiff_t offset) KESTO_INLINE_LAMBDA { return vector_at<W>(turn.at + offset); };
  Vector<W> updated = relaxed(turn.own, i_plus, turn.i_minus, neighbour(to.row), neighbour(-to.row),
                              neighbour(to.plane), neighbour(-to.plane), neighbour(to.source), w);
  if (masked) updated = reinterpret_cast<Vector<W>>(reinterpret_cast<Mask<W>>(updated) & live);
  vector_at<W>(turn.at) = updated;
  turn = {turn.at + W, i_plus, updated};
}

// The last vector of a row, and on to the first one of the next.
template <int W>
KESTO_INLINE void advance_to_next_row(Turn<W>& turn, const Strides& to, const RelaxationWeights& w, Mask<W> live) {
  const auto next = vector_at<W>(turn.at + W);
  advance<W, true>(turn, from_second<W>(next, Vector<W>{}), to, w, live);
  turn.own = next;
  turn.i_minus = from_last<W>(Vector<W>{}, turn.i_minus);
}

// A row y of the first turn, y - 1 of the second, ... `all_lines`: in each of these all lanes have a line.
template <int W, bool all_lines, int... n>
KESTO_INLINE void relax_row(Turn<W>* turns, int y, const SkewedLayout& layout, const Strides& to,
                            const RelaxationWeights& w, std::ptrdiff_t ahead, std::integer_sequence<int, n...>) {
  const Mask<W> lines[] = {all_lines ? ~Mask<W>{} : live_lines<W>(y - n, layout.lines)...};
  for (int m = 0; m < layout.first_partial; ++m) {
    __builtin_prefetch(turns[0].at + ahead);
    __builtin_prefetch(turns[0].at + ahead + to.source);
    (advance<W, !all_lines>(turns[n], vector_at<W>(turns[n].at + W), to, w, lines[n]), ...);
  }
  for (int m = layout.first_partial; m + 1 < layout.vectors; ++m) {
    const auto columns = load_mask<W>(layout.live_lanes[m - layout.first_partial]);
    (advance<W, true>(turns[n], vector_at<W>(turns[n].at + W), to, w, lines[n] & columns), ...);
  }
  const auto columns = load_mask<W>(layout.live_lanes[layout.vectors - 1 - layout.first_partial]);
  (advance_to_next_row<W>(turns[n], to, w, lines[n] & columns), ...);
}

// Weights and run by value: for all that the compiler knows, a store could change what a reference points to.
template <int W, int... n>
KESTO_INLINE void relax(const SkewedLayout& layout, const RelaxationWeights w, const RowRun run,
                        std::integer_sequence<int, n...> all_turns) {
  const Strides to = {layout.row, layout.plane, run.source};
  Turn<W> turns[] = {{run.start + n * run.next_turn, load<W>(run.start + n * run.next_turn),
                      from_last<W>(Vector<W>{}, load<W>(run.start + n * run.next_turn - W))}...};
  constexpr int last_turn = sizeof...(n) - 1;
  for (int y = run.y; y < run.y + run.rows; ++y) {
    if (y - last_turn >= W && y <= layout.lines) {
      relax_row<W, true>(turns, y, layout, to, w, run.ahead, all_turns);
    } else {
      relax_row<W, false>(turns, y, layout, to, w, run.ahead, all_turns);
    }
  }
}

template <int turns>
struct Relax {
  using Signature = void(const SkewedLayout& layout, const RelaxationWeights& weights, const RowRun& run);
  template <class Target>
  KESTO_INLINE static void run(const SkewedLayout& layout, const RelaxationWeights& weights, const RowRun& rows) {
    relax<Target::width>(layout, weights, rows, std::make_integer_sequence<int, turns>{});
  }
};

}  // namespace

RelaxRows relax_rows(VectorTarget target, int turns) {
  static_assert(max_turns == 6, "one case for each");
  switch (turns) {
    case 1: return kernel_on<Relax<1>>(target);
    case 2: return kernel_on<Relax<2>>(target);
    case 3: return kernel_on<Relax<3>>(target);
    case 4: return kernel_on<Relax<4>>(target);
    case 5: return kernel_on<Relax<5>>(target);
    default: return kernel_on<Relax<6>>(target);
  }
}

}  // namespace kesto
