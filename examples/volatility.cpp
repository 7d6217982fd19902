// Volatility of stock indices, computed with the vector functions of orba.h alone.
//
//   volatility PRICES.csv
//
// The file has a header "time,NAME,NAME,..." and one row per trading day: the time in years, then
// the closing price of each index. Printed are the yearly volatility of the daily log returns over
// all days and over a rolling window, what each processor class makes of the same work, a long
// vector on one and on all cores, and what the library reports about a bad element.

#include <orba.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "prices.h"

namespace {

constexpr int kWindow = 60;           // trading days, about a quarter
constexpr double kDaysPerYear = 260;  // trading days

// ---- the computation ----

// Sum over all days, per index, by folding the later half of the days onto the earlier one.
Series sum_of_days(Series values, int indices) {
  int days = static_cast<int>(values.size()) / indices;
  while (days > 1) {
    const int half = days / 2;
    vdAdd(half * indices, values.data(), values.data() + (days - half) * indices, values.data());
    days -= half;
  }
  values.resize(static_cast<size_t>(indices));
  return values;
}

// Sums of `window` successive days, for each day that a whole window starts at.
Series rolling_sum(const Series& values, int indices, int window) {
  const int n = static_cast<int>(values.size()) - (window - 1) * indices;
  Series sum(values.begin(), values.begin() + n);
  for (int day = 1; day < window; ++day) {
    vdAdd(n, sum.data(), values.data() + day * indices, sum.data());
  }
  return sum;
}

// Variance per year from sums and sums of squares of `count` daily returns.
Series yearly_variance(const Series& sum, const Series& sum_of_squares, int count) {
  const int n = static_cast<int>(sum.size());
  const Series one_over_count(sum.size(), 1.0 / count);
  const Series scale(sum.size(), kDaysPerYear / (count - 1));
  Series variance(sum.size());
  vdSqr(n, sum.data(), variance.data());
  vdMul(n, variance.data(), one_over_count.data(), variance.data());
  vdSub(n, sum_of_squares.data(), variance.data(), variance.data());
  vdMul(n, variance.data(), scale.data(), variance.data());
  return variance;
}

Series square_root(const Series& values) {
  Series result(values.size());
  vdSqrt(static_cast<int>(values.size()), values.data(), result.data());
  return result;
}

// ---- the tables ----

void print_row(const char* label, const Series& values, const char* format) {
  std::printf("  %-34s", label);
  for (const double value : values) std::printf(format, value);
  std::printf("\n");
}

void print_volatility(const Prices& prices) {
  const int indices = prices.indices();
  const Series returns = daily_returns(prices.values, indices);
  const int days = prices.days() - 1;
  Series squares(returns.size());
  vdSqr(static_cast<int>(returns.size()), returns.data(), squares.data());

  const Series sum = sum_of_days(returns, indices);
  const Series variance = yearly_variance(sum, sum_of_days(squares, indices), days);
  const Series volatility = square_root(variance);
  const Series rolling = square_root(yearly_variance(
      rolling_sum(returns, indices, kWindow), rolling_sum(squares, indices, kWindow), kWindow));

  // Mean log return per year, and the same per unit of volatility.
  const Series to_year(sum.size(), kDaysPerYear / days);
  Series mean(sum.size()), ratio(sum.size());
  vdMul(indices, sum.data(), to_year.data(), mean.data());
  vdInvSqrt(indices, variance.data(), ratio.data());
  vdMul(indices, mean.data(), ratio.data(), ratio.data());

  Series lowest(rolling.begin(), rolling.begin() + indices), highest = lowest;
  Series when_lowest(lowest.size(), prices.times[kWindow]), when_highest = when_lowest;
  for (size_t i = 0; i < rolling.size(); ++i) {
    const size_t index = i % lowest.size();
    const double time = prices.times[i / lowest.size() + kWindow];
    if (rolling[i] < lowest[index]) lowest[index] = rolling[i], when_lowest[index] = time;
    if (rolling[i] > highest[index]) highest[index] = rolling[i], when_highest[index] = time;
  }
  const auto percent = [](Series values) {
    for (double& value : values) value *= 100;
    return values;
  };
  const auto first = prices.values.begin(), last = prices.values.end();

  std::printf("Daily closing prices %.2f to %.2f, %d returns; a year has %.0f trading days\n\n",
              prices.times.front(), prices.times.back(), days, kDaysPerYear);
  std::printf("  %-34s", "");
  for (const auto& name : prices.names) std::printf("%10s", name.c_str());
  std::printf("\n");
  print_row("first close", Series(first, first + indices), "%10.2f");
  print_row("last close", Series(last - indices, last), "%10.2f");
  print_row("mean log return, % a year", percent(mean), "%10.2f");
  print_row("volatility, % a year", percent(volatility), "%10.2f");
  print_row("return per unit of volatility", ratio, "%10.2f");
  std::printf("\n  rolling volatility over %d days, %% a year\n", kWindow);
  print_row("lowest", percent(lowest), "%10.2f");
  print_row("  in the window that ended", when_lowest, "%10.2f");
  print_row("highest", percent(highest), "%10.2f");
  print_row("  in the window that ended", when_highest, "%10.2f");
  for (int day = kWindow; day < prices.days(); ++day) {
    const size_t at = static_cast<size_t>(day);
    const bool year_ends =
        day + 1 == prices.days() || std::floor(prices.times[at + 1]) > std::floor(prices.times[at]);
    if (!year_ends) continue;
    char label[40];
    std::snprintf(label, sizeof label, "at %.2f", prices.times[at]);
    const auto row = rolling.begin() + (day - kWindow) * indices;
    print_row(label, percent(Series(row, row + indices)), "%10.2f");
  }
}

// ---- processor classes ----

// What a process found under its environment: nanoseconds per element of two calls, and a digest of
// the bits of results where the classes may differ (within the error bounds).
struct Measurement {
  double inv_sqrt, div;
  uint64_t digest;
};

constexpr int kLength = 1000;

// Best of many short runs: the least disturbed one.
template <class Call>
double nanoseconds_per_element(Call call) {
  using Clock = std::chrono::steady_clock;
  constexpr int kCalls = 50;
  double best = std::numeric_limits<double>::infinity();
  for (int run = 0; run < 200; ++run) {
    const auto start = Clock::now();
    for (int i = 0; i < kCalls; ++i) call();
    const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
    best = std::min(best, elapsed.count() / (kCalls * kLength));
  }
  return best;
}

Measurement measure() {
  Series a(kLength), b(kLength), y(kLength);
  for (size_t i = 0; i < a.size(); ++i) {
    a[i] = 1.0 + 0.37 * static_cast<double>(i);
    b[i] = 3.0 + 0.11 * static_cast<double>(i);
  }
  Measurement result{0, 0, 14695981039346656037u};  // FNV-1a
  const auto digest_results = [&] {
    for (const double value : y) {
      uint64_t bits;
      std::memcpy(&bits, &value, sizeof bits);
      result.digest = (result.digest ^ bits) * 1099511628211u;
    }
  };
  for (const uint32_t accuracy : {KAM_LA, KAM_EP}) {
    vmdInvSqrt(kLength, a.data(), y.data(), accuracy);
    digest_results();
    vmdDiv(kLength, a.data(), b.data(), y.data(), accuracy);
    digest_results();
  }
  kamSetMode(KAM_LA);
  result.inv_sqrt = nanoseconds_per_element([&] { vdInvSqrt(kLength, a.data(), y.data()); });
  result.div = nanoseconds_per_element([&] { vdDiv(kLength, a.data(), b.data(), y.data()); });
  return result;
}

// Runs `task` of this program in a process of its own with an environment variable set (if any) and
// reads its result: the library reads its environment once per process.
template <class Result>
Result in_child(const char* task, const char* variable, const char* value) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
  std::fflush(stdout);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error(std::string("fork: ") + std::strerror(errno));
  if (child == 0) {
    if (value != nullptr) setenv(variable, value, 1);
    dup2(ends[1], STDOUT_FILENO);
    execl("/proc/self/exe", "volatility", task, static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ends[1]);
  Result result{};
  const bool complete = read(ends[0], &result, sizeof result) == sizeof result;
  close(ends[0]);
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0 || !complete) {
    throw std::runtime_error("the measuring process failed");
  }
  return result;
}

template <class Result>
int write_result(const Result& result) {
  return std::fwrite(&result, sizeof result, 1, stdout) == 1 ? 0 : 1;
}

Measurement measure_with_instructions(const char* level) {
  return in_child<Measurement>("--measure", "ORBA_ENABLE_INSTRUCTIONS", level);
}

void print_classes() {
  std::printf(
      "\nProcessor classes: ns per element at low accuracy, n = %d, each in a new process\n\n"
      "  %-34s%10s%10s   results\n",
      kLength, "ORBA_ENABLE_INSTRUCTIONS", "vdInvSqrt", "vdDiv");
  const char* requested = std::getenv("ORBA_ENABLE_INSTRUCTIONS");
  const Measurement chosen = measure_with_instructions(nullptr);
  std::string same;
  const auto print = [](const char* label, const Measurement& m, const char* results) {
    std::printf("  %-34s%10.3f%10.3f   %s\n", label, m.inv_sqrt, m.div, results);
  };
  print(requested ? requested : "not set", chosen, "this run");
  for (const char* level : {"SSE4_2", "AVX2", "AVX512"}) {
    const Measurement measured = measure_with_instructions(level);
    const bool equal = measured.digest == chosen.digest;
    if (equal) same += (same.empty() ? "" : ", ") + std::string(level);
    print(level, measured, equal ? "same bits as this run" : "other bits, same error bounds");
  }
  std::printf("\n  This run uses the kernels of: %s\n",
              same.empty() ? "none of these, the baseline" : same.c_str());
  std::printf("  (a level that the processor lacks has no effect)\n");
}

// ---- threads ----

constexpr int kLongLength = 1000000;

// Milliseconds of one call over a long vector, best of many.
double measure_long_vector() {
  Series a(kLongLength), y(kLongLength);
  for (size_t i = 0; i < a.size(); ++i) a[i] = 1.0 + 1e-6 * static_cast<double>(i);
  using Clock = std::chrono::steady_clock;
  double best = std::numeric_limits<double>::infinity();
  for (int run = 0; run < 50; ++run) {
    const auto start = Clock::now();
    vdLn(kLongLength, a.data(), y.data());
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    best = std::min(best, elapsed.count());
  }
  return best;
}

void print_threads() {
  const double one = in_child<double>("--measure-long", "ORBA_NUM_THREADS", "1");
  const double all = in_child<double>("--measure-long", "ORBA_NUM_THREADS", nullptr);
  std::printf("\nA long vector: vdLn at high accuracy, n = %d, each in a new process\n\n",
              kLongLength);
  std::printf("  %-34s%10.3f ms\n", "ORBA_NUM_THREADS=1", one);
  std::printf("  %-34s%10.3f ms, %.2f times as fast\n", "as many threads as pay off", all,
              one / all);
}

// ---- a bad element ----

const char* status_text(int32_t code) {
  switch (code) {
    case KAM_STATUS_ERRDOM:
      return "argument out of the domain";
    case KAM_STATUS_SING:
      return "singularity";
    case KAM_STATUS_OVERFLOW:
      return "overflow";
    case KAM_STATUS_UNDERFLOW:
      return "underflow";
    default:
      return "other";
  }
}

// Prints the record and replaces the result by one that means no change: the ratio 1, the return 0.
int report_and_replace(KamErrorContext* context) {
  const double neutral = std::strcmp(context->func_name, "vdLn") == 0 ? 0.0 : 1.0;
  std::printf("  callback: %s, element %d, code %d (%s): argument %g, result %g, replaced by %g\n",
              context->func_name, context->index, context->code, status_text(context->code),
              context->a1, context->r1, neutral);
  context->r1 = neutral;
  return 0;
}

void print_bad_element(const Prices& prices) {
  constexpr int kDays = 6, kBadDay = 3;
  Series some;
  for (size_t day = 0; day < kDays; ++day) some.push_back(prices.values[day * prices.names.size()]);
  some[kBadDay] = 0.0;
  std::printf("\nA bad element: the first %d prices of %s, the one of day %d set to zero\n\n",
              kDays, prices.names[0].c_str(), kBadDay);
  kamClearErrStatus();
  kamSetErrorCallBack(report_and_replace);
  const Series returns = daily_returns(some, 1);
  kamClearErrorCallBack();
  std::printf("  status after the call: %d\n", kamClearErrStatus());
  std::printf("  %-10s", "prices");
  for (const double value : some) std::printf("%10.2f", value);
  std::printf("\n  %-20s", "returns, %");
  for (const double value : returns) std::printf("%10.2f", 100 * value);
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: volatility PRICES.csv\n");
    return 2;
  }
  try {
    if (std::strcmp(argv[1], "--measure") == 0) return write_result(measure());
    if (std::strcmp(argv[1], "--measure-long") == 0) return write_result(measure_long_vector());
    const Prices prices = read_prices(argv[1], kWindow + 2);
    print_volatility(prices);
    print_classes();
    print_threads();
    print_bad_element(prices);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "volatility: %s\n", error.what());
    return 1;
  }
}
