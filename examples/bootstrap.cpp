// Value at risk of a portfolio by bootstrap, with the random streams of orba.h.
//
//   bootstrap PRICES.csv
//
// The portfolio holds the indices of the file in equal parts, rebalanced daily. A scenario is ten
// days drawn with replacement from the days of the file; its loss is what the portfolio loses over
// them. The scenarios come in blocks, and the stream of a block is the one stream of the whole
// computation, skipped ahead to where the block begins: so the result is the same bits whatever
// number of threads share the blocks.
#include <orba.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "prices.h"

namespace {

constexpr uint32_t kSeed = 20231105;
constexpr int kHorizon = 10;  // days of a scenario
constexpr int kBlock = 1000;  // scenarios
constexpr int kBlocks = 200;
constexpr int kScenarios = kBlock * kBlocks;

void check(int32_t status) {
  if (status < 0) throw std::runtime_error("a stream call failed: " + std::to_string(status));
}

// A stream that is deleted in the end.
class Stream {
 public:
  Stream(int32_t generator, uint32_t seed) { check(rauNewStream(&stream_, generator, seed)); }
  ~Stream() { rauDeleteStream(&stream_); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  operator StreamState*() { return stream_; }

 private:
  StreamState* stream_ = nullptr;
};

// Log return of the portfolio, day by day.
Series portfolio_returns(const Prices& prices) {
  const size_t indices = prices.names.size();
  Series growth = daily_returns(prices.values, static_cast<int>(indices));
  vdExpm1(static_cast<int>(growth.size()), growth.data(), growth.data());
  Series portfolio(growth.size() / indices, 0.0);
  for (size_t i = 0; i < growth.size(); ++i) {
    portfolio[i / indices] += growth[i] / static_cast<double>(indices);
  }
  vdLog1p(static_cast<int>(portfolio.size()), portfolio.data(), portfolio.data());
  return portfolio;
}

// Losses of the scenarios of one block, as parts of the portfolio's value.
void simulate(int block, const Series& returns, double* losses) {
  constexpr int kDraws = kBlock * kHorizon;
  Stream stream(RAU_BRNG_MRG32K3A, kSeed);
  check(rauSkipAheadStream(stream, int64_t{block} * kDraws));
  std::vector<int32_t> days(kDraws);
  check(viRngUniform(RAU_METHOD_STD, stream, kDraws, days.data(), 0,
                     static_cast<int32_t>(returns.size())));
  for (size_t scenario = 0; scenario < kBlock; ++scenario) {
    double sum = 0;
    for (size_t day = 0; day < kHorizon; ++day) {
      sum += returns[static_cast<size_t>(days[scenario * kHorizon + day])];
    }
    losses[scenario] = sum;
  }
  vdExpm1(kBlock, losses, losses);
  for (int scenario = 0; scenario < kBlock; ++scenario) losses[scenario] = -losses[scenario];
}

Series all_losses(const Series& returns, int threads) {
  Series losses(kScenarios);
  std::atomic<int> next{0};
  const auto work = [&] {
    for (int block; (block = next++) < kBlocks;) {
      simulate(block, returns, &losses[static_cast<size_t>(block) * kBlock]);
    }
  };
  std::vector<std::thread> team;
  for (int i = 1; i < threads; ++i) team.emplace_back(work);
  work();
  for (std::thread& thread : team) thread.join();
  return losses;
}

// The smallest loss that is not exceeded with probability `level`.
double value_at_risk(Series losses, double level) {
  const auto rank = static_cast<ptrdiff_t>(level * kScenarios);
  std::nth_element(losses.begin(), losses.begin() + rank, losses.end());
  return losses[static_cast<size_t>(rank)];
}

void print_distribution(const Prices& prices) {
  const Series returns = portfolio_returns(prices);
  std::printf("Bootstrap of a portfolio of equal parts:");
  for (const auto& name : prices.names) std::printf(" %s", name.c_str());
  std::printf("\n%d scenarios of %d days, drawn from %zu daily returns by MRG32k3a, seed %u\n\n",
              kScenarios, kHorizon, returns.size(), kSeed);

  using Clock = std::chrono::steady_clock;
  const int all = static_cast<int>(std::max(4u, std::thread::hardware_concurrency()));
  std::printf("  %-10s%14s%14s%14s%12s\n", "threads", "VaR 95 %", "VaR 99 %", "worst loss", "ms");
  Series first;
  for (const int threads : {1, 2, all}) {
    const auto start = Clock::now();
    const Series losses = all_losses(returns, threads);
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    if (first.empty()) first = losses;
    std::printf("  %-10d%12.4f %%%12.4f %%%12.4f %%%12.1f   %s\n", threads,
                100 * value_at_risk(losses, 0.95), 100 * value_at_risk(losses, 0.99),
                100 * *std::max_element(losses.begin(), losses.end()), elapsed.count(),
                losses == first ? "same bits" : "DIFFERS");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: bootstrap PRICES.csv\n");
    return 2;
  }
  try {
    print_distribution(read_prices(argv[1], 2));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bootstrap: %s\n", error.what());
    return 1;
  }
}
