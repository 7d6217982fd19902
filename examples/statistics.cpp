// Summary statistics of stock indices, computed by tasks of orba.h alone.
//
//   statistics PRICES.csv [DIRECTORY]
//
// Printed are moments, quantiles, deviations and correlations of the daily log returns, from a task
// over all days, and how far a second task agrees that is fed block by block. Two pictures, of the
// correlations and of the distributions, are drawn into DIRECTORY (default: build/statistics).
#include <orba.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "prices.h"

namespace {

constexpr double kDaysPerYear = 260;  // trading days
constexpr int kBlock = 250;           // days that the second task is fed at a time
constexpr std::array kOrders = {0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99};
constexpr size_t kLow = 1, kHigh = 5;  // the orders that the picture shows

// ---- the estimates ----

constexpr uint64_t kByBlocks = RAU_SS_MEAN | RAU_SS_2C_MOM | RAU_SS_SKEWNESS | RAU_SS_KURTOSIS |
                               RAU_SS_COR | RAU_SS_MIN | RAU_SS_MAX;
constexpr uint64_t kAll = kByBlocks | RAU_SS_QUANTS | RAU_SS_MDAD | RAU_SS_MNAD;

void check(int32_t status) {
  if (status < 0) throw std::runtime_error("a task call failed: " + std::to_string(status));
}

// A task over returns, those of one day side by side, with the arrays of its results.
class Estimates {
 public:
  Series mean, variance, skewness, kurtosis, lowest, highest, median_deviation, mean_deviation;
  Series quantiles;    // those of an index side by side
  Series correlation;  // the diagonal holds variances

  explicit Estimates(int indices) : indices_(indices) {
    check(raudSSNewTask(&task_, &indices_, &days_, &kDayByDay, nullptr, nullptr, nullptr));
    check(raudSSEditTask(task_, RAU_SS_ED_ACCUM_WEIGHT, weight_));
    // Higher central moments are made of lower and raw ones, which need a place too.
    check(raudSSEditMoments(task_, place(mean), place(raw_[0]), place(raw_[1]), place(raw_[2]),
                            place(variance), place(central_[0]), place(central_[1])));
    check(raudSSEditCovCor(task_, nullptr, nullptr, nullptr, place(correlation, indices), &kFull));
    check(raudSSEditQuantiles(task_, &kOrderCount, kOrders.data(), place(quantiles, kOrderCount),
                              nullptr, nullptr));
    check(raudSSEditTask(task_, RAU_SS_ED_SKEWNESS, place(skewness)));
    check(raudSSEditTask(task_, RAU_SS_ED_KURTOSIS, place(kurtosis)));
    check(raudSSEditTask(task_, RAU_SS_ED_MIN, place(lowest)));
    check(raudSSEditTask(task_, RAU_SS_ED_MAX, place(highest)));
    check(raudSSEditTask(task_, RAU_SS_ED_MDAD, place(median_deviation)));
    check(raudSSEditTask(task_, RAU_SS_ED_MNAD, place(mean_deviation)));
  }
  ~Estimates() { rauSSDeleteTask(&task_); }
  Estimates(const Estimates&) = delete;
  Estimates& operator=(const Estimates&) = delete;

  // Goes on with further days: moments, correlation and extremes are then those of all days so far.
  void add(const double* returns, int days, uint64_t estimates, uint32_t method) {
    if (weight_[0] == 0) {  // extremes go on from what is there
      std::copy_n(returns, indices_, lowest.begin());
      std::copy_n(returns, indices_, highest.begin());
    }
    days_ = days;
    check(raudSSEditTask(task_, RAU_SS_ED_OBSERV, returns));
    check(raudSSCompute(task_, estimates, method));
  }

 private:
  static constexpr int32_t kDayByDay = RAU_SS_MATRIX_STORAGE_COLS;
  static constexpr int32_t kFull = RAU_SS_MATRIX_STORAGE_FULL;
  static constexpr int32_t kOrderCount = kOrders.size();

  double* place(Series& results, int per_index = 1) {
    results.resize(static_cast<size_t>(indices_ * per_index));
    return results.data();
  }

  int32_t indices_, days_ = 0;
  SsTask* task_ = nullptr;
  double weight_[2] = {0, 0};  // sums of weights and of their squares so far
  Series raw_[3], central_[2];
};

// The largest difference between results, as a part of the results.
double difference(const Series& a, const Series& b) {
  double largest = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    largest = std::max(largest, std::abs(a[i] - b[i]) / std::abs(a[i]));
  }
  return largest;
}

// ---- the tables ----

// One number per index, those of `values` from `first` on, `step` apart.
void print_row(const char* label, const Prices& prices, const Series& values, double factor = 1,
               size_t first = 0, size_t step = 1) {
  std::printf("  %-34s", label);
  for (size_t i = 0; i < prices.names.size(); ++i) {
    std::printf("%10.4f", factor * values[first + i * step]);
  }
  std::printf("\n");
}

void print_estimates(const Prices& prices, const Estimates& estimates) {
  const size_t indices = prices.names.size();
  Series volatility(indices);
  vdSqrt(prices.indices(), estimates.variance.data(), volatility.data());
  std::printf("Summary statistics of %d daily log returns; a year has %.0f trading days\n\n",
              prices.days() - 1, kDaysPerYear);
  std::printf("  %-34s", "");
  for (const auto& name : prices.names) std::printf("%10s", name.c_str());
  std::printf("\n");
  print_row("mean, % a year", prices, estimates.mean, 100 * kDaysPerYear);
  print_row("volatility, % a year", prices, volatility, 100 * std::sqrt(kDaysPerYear));
  print_row("skewness", prices, estimates.skewness);
  print_row("excess kurtosis", prices, estimates.kurtosis);
  print_row("worst day, %", prices, estimates.lowest, 100);
  for (size_t k = 0; k < kOrders.size(); ++k) {
    const std::string label = "quantile " + std::to_string(kOrders[k]).substr(0, 4) + ", %";
    print_row(label.c_str(), prices, estimates.quantiles, 100, k, kOrders.size());
  }
  print_row("best day, %", prices, estimates.highest, 100);
  print_row("median absolute deviation, %", prices, estimates.median_deviation, 100);
  print_row("mean absolute deviation, %", prices, estimates.mean_deviation, 100);
  std::printf("\n  correlation (variances, %%^2 a day, on the diagonal)\n");
  for (size_t i = 0; i < indices; ++i) {
    std::printf("  %-34s", prices.names[i].c_str());
    for (size_t j = 0; j < indices; ++j) {
      std::printf("%10.4f", (i == j ? 1e4 : 1) * estimates.correlation[i * indices + j]);
    }
    std::printf("\n");
  }
}

void print_blocks(const Prices& prices, const Series& returns, const Estimates& whole) {
  Estimates blocks(prices.indices());
  const int days = prices.days() - 1;
  for (int day = 0; day < days; day += kBlock) {
    blocks.add(&returns[static_cast<size_t>(day) * prices.names.size()],
               std::min(kBlock, days - day), kByBlocks, RAU_SS_METHOD_1PASS);
  }
  std::printf(
      "\nThe same in blocks of %d days, by 1PASS instead of FAST: largest relative "
      "difference\n\n",
      kBlock);
  const auto compare = [](const char* label, double part) {
    std::printf("  %-34s%10.1e\n", label, part);
  };
  compare("mean", difference(whole.mean, blocks.mean));
  compare("variance", difference(whole.variance, blocks.variance));
  compare("skewness", difference(whole.skewness, blocks.skewness));
  compare("excess kurtosis", difference(whole.kurtosis, blocks.kurtosis));
  compare("correlation", difference(whole.correlation, blocks.correlation));
  compare("worst and best day", std::max(difference(whole.lowest, blocks.lowest),
                                         difference(whole.highest, blocks.highest)));
}

// ---- the pictures ----

class Svg {
 public:
  Svg(const std::string& path, int width, int height) : file_(std::fopen(path.c_str(), "w")) {
    if (file_ == nullptr) throw std::runtime_error(path + ": " + std::strerror(errno));
    draw(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" "
        "font-family=\"sans-serif\" font-size=\"13\" text-anchor=\"middle\">\n"
        "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n",
        width, height);
  }
  ~Svg() {
    draw("</svg>\n");
    std::fclose(file_);
  }
  Svg(const Svg&) = delete;
  Svg& operator=(const Svg&) = delete;

  [[gnu::format(printf, 2, 3)]] void draw(const char* format, ...) {
    va_list values;
    va_start(values, format);
    std::vfprintf(file_, format, values);
    va_end(values);
  }
  void text(double x, double y, const std::string& words) {
    std::string escaped;
    for (const char c : words) {
      escaped += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    draw("<text x=\"%g\" y=\"%g\">%s</text>\n", x, y, escaped.c_str());
  }

 private:
  std::FILE* file_;
};

// A square per pair, the darker the closer.
void draw_correlation(const std::string& path, const Prices& prices, const Estimates& estimates) {
  constexpr int kCell = 90, kMargin = 70;
  const int indices = prices.indices(), side = kMargin + indices * kCell + 20;
  Svg svg(path, side, side);
  for (int i = 0; i < indices; ++i) {
    const std::string& name = prices.names[static_cast<size_t>(i)];
    const double middle = kMargin + (i + 0.5) * kCell;
    svg.text(middle, kMargin - 12, name);
    svg.text(kMargin / 2.0, middle + 5, name);
    for (int j = 0; j < indices; ++j) {
      const double r = i == j ? 1.0 : estimates.correlation[static_cast<size_t>(i * indices + j)];
      svg.draw(
          "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"%s\" "
          "fill-opacity=\"%.3f\" stroke=\"white\"/>\n",
          kMargin + j * kCell, kMargin + i * kCell, kCell, kCell, r < 0 ? "firebrick" : "steelblue",
          std::min(1.0, std::abs(r)));
      char number[16];
      std::snprintf(number, sizeof number, "%.3f", r);
      svg.text(kMargin + (j + 0.5) * kCell, middle + 5, number);
    }
  }
}

// A histogram per index over the same range of returns, with lines at two quantiles; what lies
// beyond the range is counted in its last bars.
void draw_histograms(const std::string& path, const Prices& prices, const Series& returns,
                     const Estimates& estimates) {
  constexpr int kBars = 60, kBarWidth = 10, kPanel = 150, kMargin = 30;
  constexpr double kRange = 0.04;           // on either side of 0
  const auto position = [](double value) {  // in bars
    return std::clamp((value + kRange) / (2 * kRange), 0.0, 1.0) * kBars;
  };
  Svg svg(path, 2 * kMargin + kBars * kBarWidth, prices.indices() * (kPanel + kMargin) + kMargin);
  const size_t indices = prices.names.size();
  for (size_t index = 0; index < indices; ++index) {
    std::array<int, kBars> count{};
    for (size_t i = index; i < returns.size(); i += indices) {
      ++count[std::min(static_cast<size_t>(position(returns[i])), count.size() - 1)];
    }
    const double scale =
        kPanel / static_cast<double>(*std::max_element(count.begin(), count.end()));
    const double floor = static_cast<double>(index + 1) * (kPanel + kMargin);
    svg.text(kMargin + 40, floor - kPanel + 20, prices.names[index]);
    for (size_t bar = 0; bar < count.size(); ++bar) {
      const double height = scale * count[bar];
      svg.draw(
          "<rect x=\"%g\" y=\"%.2f\" width=\"%d\" height=\"%.2f\" fill=\"steelblue\">"
          "<title>%d days</title></rect>\n",
          kMargin + kBarWidth * static_cast<double>(bar), floor - height, kBarWidth - 1, height,
          count[bar]);
    }
    for (const size_t k : {kLow, kHigh}) {
      const double quantile = estimates.quantiles[index * kOrders.size() + k];
      svg.draw(
          "<line x1=\"%.2f\" x2=\"%.2f\" y1=\"%g\" y2=\"%g\" stroke=\"firebrick\">"
          "<title>quantile %g: %.4f %%</title></line>\n",
          kMargin + kBarWidth * position(quantile), kMargin + kBarWidth * position(quantile), floor,
          floor - kPanel, kOrders[k], 100 * quantile);
    }
    for (const int percent : {-4, -2, 0, 2, 4}) {
      svg.text(kMargin + kBarWidth * position(percent / 100.0), floor + 15,
               std::to_string(percent) + " %");
    }
  }
}

void print_statistics(const Prices& prices, const std::string& directory) {
  const Series returns = daily_returns(prices.values, prices.indices());
  Estimates whole(prices.indices());
  whole.add(returns.data(), prices.days() - 1, kAll, RAU_SS_METHOD_FAST);
  print_estimates(prices, whole);
  print_blocks(prices, returns, whole);
  std::filesystem::create_directories(directory);
  draw_correlation(directory + "/correlation.svg", prices, whole);
  draw_histograms(directory + "/histograms.svg", prices, returns, whole);
  std::printf("\nPictures: %s/correlation.svg, %s/histograms.svg\n", directory.c_str(),
              directory.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fprintf(stderr, "usage: statistics PRICES.csv [DIRECTORY]\n");
    return 2;
  }
  try {
    print_statistics(read_prices(argv[1], 3), argc == 3 ? argv[2] : "build/statistics");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "statistics: %s\n", error.what());
    return 1;
  }
}
