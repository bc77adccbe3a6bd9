// Long random sequences for the differential drivers of fuzz/models: the
// three QXList members against std::set and QUEUE against std::list. The
// first byte picks the list member (or none) and the way values are drawn,
// and a queue run follows; the rest of the input, then a generator seeded
// from it, supplies the random numbers.
// Any difference aborts with its description.
#include "models/integer_list_model.h"
#include "models/queue_model.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// Numbers - 64-bit numbers from the input, then from a generator
// (splitmix64) seeded with what the input held.
class Numbers {
public:
  Numbers(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint64_t operator()() {
    uint64_t v = 0;
    if (at_ + 8 <= size_) {
      std::memcpy(&v, data_ + at_, 8);
      at_ += 8;
      state_ ^= v;
      return v;
    }
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
  uint64_t state_ = 0;
};

void Report(const std::string& difference, int step) {
  if (difference.empty())
    return;
  std::fprintf(stderr, "step %d: %s\n", step, difference.c_str());
  std::abort();
}

template <class T> void RunList(qxtest::Profile profile, int steps, Numbers& next) {
  qxtest::IntegerListDifferential<T> d(profile);
  if (!d.ok())
    std::abort();
  for (int step = 0; step < steps; ++step)
    Report(d.Step(next), step);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  Numbers next(data + 1, size - 1);
  const auto profile = static_cast<qxtest::Profile>((data[0] >> 2) % 4);
  // Edge sets stay tiny, so their steps are cheap.
  const int steps = profile == qxtest::Profile::kEdges ? 4000 : 800;
  switch (data[0] % 4) {
  case 0:
    RunList<long>(profile, steps, next);
    break;
  case 1:
    RunList<unsigned long>(profile, steps, next);
    break;
  case 2:
    RunList<unsigned long long>(profile, steps, next);
    break;
  default:
    break;
  }
  // A queue run follows every input: it costs little beside a list's, and
  // so the short run, which gets through few inputs, sees many queues.
  qxtest::QueueDifferential d(8 + data[0] % 64);
  for (int step = 0; step < 3000; ++step)
    Report(d.Step(next), step);
  return 0;
}
