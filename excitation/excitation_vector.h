// The signals of an array of elements, and their owner.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <variant>

#include "excitation/hanning_pulse.h"
#include "excitation/sampled_signal.h"
#include "excitation/t_cubed_pulse.h"
#include "excitation/tone_burst.h"

// One signal for all elements, or one to an element. Frees them, with everything that they hold; elements that point at
// them must be done before.
class ExcitationVector {
 public:
  using Signal = std::variant<ToneBurst, HanningPulse, TCubedPulse, SampledSignal>;

  explicit ExcitationVector(int signals)
      : signals_(std::make_unique<Signal[]>(static_cast<std::size_t>(signals))), count_(signals) {}

  int count() const { return count_; }  // of signals: 1, or one to an element

  // The signal of an element.
  ExcitationFunction* operator[](int element) const {
    return std::visit([](auto& signal) -> ExcitationFunction* { return &signal; },
                      signals_[static_cast<std::size_t>(count_ == 1 ? 0 : element)]);
  }

  template <class Pulse, class... Arguments>
  void emplace(int i, Arguments&&... arguments) {
    signals_[static_cast<std::size_t>(i)].template emplace<Pulse>(std::forward<Arguments>(arguments)...);
  }

 private:
  std::unique_ptr<Signal[]> signals_;
  int count_;
};
