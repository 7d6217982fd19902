#include "services/timer.h"

#include <cpuid.h>
#include <stdint.h>
#include <string.h>
#include <x86intrin.h>

#include <algorithm>
#include <atomic>

#include "services/platform/platform.h"

namespace orba::services {
namespace {

constexpr double kNotMeasured = -1.0;
constinit std::atomic<double> rate_word{kNotMeasured};

// CPUID lets everything before it finish first.
uint64_t read_counter() noexcept {
  uint32_t eax, ebx, ecx, edx;
  __cpuid(0, eax, ebx, ecx, edx);
  return __rdtsc();
}

// The counter against the system's clock; 0 when one of them doesn't run.
double measure_rate() noexcept {
  const uint64_t frequency = platform::clock_frequency();
  if (frequency == 0) return 0.0;
  const uint64_t clock_start = platform::clock_count();
  const uint64_t start = read_counter();
  while (platform::clock_count() - clock_start < frequency / 10) {
  }
  const uint64_t clock_end = platform::clock_count();
  const uint64_t end = read_counter();
  if (end == start) return 0.0;
  const double seconds =
      static_cast<double>(clock_end - clock_start) / static_cast<double>(frequency);
  return static_cast<double>(end - start) / seconds * 1e-9;
}

// Once for all: with another rate the origin would move under a span that is being timed, so of
// threads that measure at the same time the first to finish decides.
double find_rate() noexcept {
  double rate = measure_rate();
  if (rate <= 0.0) rate = clock_rate_for_header();
  double known = kNotMeasured;
  return rate_word.compare_exchange_strong(known, rate, std::memory_order_relaxed) ? rate : known;
}

}  // namespace

double counter_rate() noexcept {
  const double rate = rate_word.load(std::memory_order_relaxed);
  return rate != kNotMeasured ? rate : find_rate();
}

double timer_seconds() noexcept {
  const double rate = counter_rate();
  return static_cast<double>(read_counter()) / (rate / 1e-9);
}

double rate_in_brand(const char (&tail)[16]) noexcept {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  for (int unit = 4; unit <= 13; ++unit) {
    if (tail[unit + 1] != 'H' || tail[unit + 2] != 'z') continue;
    double megahertz = 0.0;
    switch (tail[unit]) {
      case 'M':
        megahertz = 1.0;
        break;
      case 'G':
        megahertz = 1e3;
        break;
      case 'T':
        megahertz = 1e6;
        break;
      default:
        continue;
    }
    // "d.dd" or "dddd"
    const char* number = tail + unit - 4;
    double value = 0.0;
    double weight = number[1] == '.' ? 1.0 : 1e3;
    for (int i = 0; i < 4; ++i) {
      if (i == 1 && number[1] == '.') continue;
      if (!is_digit(number[i])) return 0.0;
      value += (number[i] - '0') * (weight * megahertz);
      weight /= 10.0;
    }
    return value * 1e-3;
  }
  return 0.0;
}

double calibrate_rate() noexcept {
  // Additions that wait for one another take a cycle each, whatever else the core has to do. (Those
  // of constants don't on every processor.) Three runs, for the core may be slow to start.
  constexpr double kCycles = 1e6;
  uint64_t least = UINT64_MAX;
  for (int run = 0; run < 3; ++run) {
    uint64_t sum = 0;
    const uint64_t start = platform::clock_count();
    for (auto left = static_cast<int>(kCycles); left > 0; left -= 10) {
      __asm__ volatile(
          "add %1, %0\n\tadd %1, %0\n\tadd %1, %0\n\tadd %1, %0\n\tadd %1, %0\n\t"
          "add %1, %0\n\tadd %1, %0\n\tadd %1, %0\n\tadd %1, %0\n\tadd %1, %0"
          : "+r"(sum)
          : "r"(start)
          : "cc");
    }
    least = std::min(least, platform::clock_count() - start);
  }
  const double seconds = static_cast<double>(std::max<uint64_t>(least, 1)) /
                         static_cast<double>(platform::clock_frequency());
  return 1e-9 * (kCycles / seconds);
}

double clock_rate_for_header() noexcept {
  constexpr uint32_t kLastBrandLeaf = 0x80000004;
  uint32_t registers[4];
  if (__get_cpuid(kLastBrandLeaf, &registers[0], &registers[1], &registers[2], &registers[3])) {
    char tail[16];
    memcpy(tail, registers, sizeof tail);
    if (const double rate = rate_in_brand(tail); rate > 0.0) return rate;
  }
  return calibrate_rate();
}

}  // namespace orba::services
