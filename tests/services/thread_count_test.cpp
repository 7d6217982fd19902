#include "services/threads/thread_count.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "services/environment.h"
#include "services/platform/topology.h"
#include "services/threads/policy.h"
#include "services/threads/settings.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"

namespace orba::services {
namespace {

using platform::ProcessorCounts;
using test::in_new_thread;
using test::in_process_with;

using Variables = std::map<std::string, std::string>;

ThreadSettings read_from(const Variables& variables) {
  static const Variables* environment;
  environment = &variables;
  return read_thread_settings([](const char* name, char* buffer, int size) {
    const auto found = environment->find(name);
    if (found == environment->end()) return 0;
    const int length = static_cast<int>(found->second.copy(buffer, static_cast<size_t>(size)));
    if (length == size) return -static_cast<int>(found->second.size()) - 1;
    buffer[length] = '\0';
    return length;
  });
}

// ---- the environment ----

using Counts = std::array<int32_t, kDomainCount>;  // all, BLAS, FFT, KAM, SOLVER

// What one variable alone does to one word.
TEST(ThreadSettings, Variables) {
  EXPECT_EQ(std::to_array(read_from({}).count), (Counts{-1, -1, -1, -1, -1}));
  EXPECT_EQ(read_from({}).dynamic, 1);
  using Word = std::function<int32_t(const ThreadSettings&)>;
  using Settings = ThreadSettings;
  const struct {
    const char* name;
    Word word;
    std::vector<std::pair<std::string, int32_t>> values;
  } variables[] = {
      // clang-format off
      // Thread counts: digits alone; anything else asks for one thread; 0 asks for nothing.
      {"ORBA_NUM_THREADS", [](const Settings& s) { return s.count[0]; },
       {{"", -1}, {"4", 4}, {"abc", 1}, {" 4", 1}, {"-4", 1}, {"0", -1},
        {"99999999999999999999", INT32_MAX}, {std::string(254, '0') + '2', 2},
        {std::string(256, '2'), -1}}},
      {"OMP_NUM_THREADS", &Settings::openmp_count, {{"", -1}, {"8", 8}, {"4,2", 1}, {"0", -1}}},
      {"ORBA_NUM_STRIPES", &Settings::stripes, {{"", -1}, {"3", 3}, {"0", 0}, {"3x", -1}}},
      {"TSL_MPI_THREAD_LEVEL", &Settings::mpi_thread_level,
       {{"", -1}, {"0", 0}, {"3", 3}, {"4", 0}, {"two", 0}}},
      {"ORBA_DYNAMIC", &Settings::dynamic,
       {{"FALSE", 0}, {"false", 0}, {" 'FALSE'", 0}, {"\"false\" x", 0}, {"", 1}, {"TRUE", 1},
        {"False", 1}, {"FALSE,", 1}, {"FALSEX", 1}, {"0", 1}, {" ", 1}}},
      {"ORBA_MPI_PPN", &Settings::processes_per_node,
       {{"", -1}, {"4", 4}, {" +4", 4}, {"4 ", -1}, {"0", -1}, {"-2", -1},
        {"99999999999", INT32_MAX}}}};
  // clang-format on
  for (const auto& variable : variables) {
    for (const auto& [text, value] : variable.values) {
      const ThreadSettings settings = read_from({{variable.name, text}});
      EXPECT_EQ(variable.word(settings), value) << variable.name << '=' << text;
    }
  }
}

TEST(ThreadSettings, DomainList) {
  const std::pair<const char*, Counts> cases[] = {
      {"ORBA_DOMAIN_ALL=2, ORBA_DOMAIN_KAM=4", {2, -1, -1, 4, -1}},
      {"ORBA_DOMAIN_ALL 2 ORBA_DOMAIN_KAM 4", {2, -1, -1, 4, -1}},
      {"\"ORBA_DOMAIN_ALL=2;ORBA_DOMAIN_KAM=4\"", {2, -1, -1, 4, -1}},
      {" ,;:'ORBA_DOMAIN_BLAS = = 1:ORBA_DOMAIN_FFT==2'", {-1, 1, 2, -1, -1}},
      {"ORBA_DOMAIN_SOLVER=5,ORBA_DOMAIN_SOLVER=6", {-1, -1, -1, -1, 5}},  // the first stands
      {"ORBA_DOMAIN_KAM=0,ORBA_DOMAIN_KAM=3", {-1, -1, -1, 3, -1}},        // 0 is no value
      {"ORBA_DOMAIN_KAM=4x,ORBA_DOMAIN_FFT=2", {-1, -1, 2, 1, -1}},
      {"ORBA_DOMAIN_KAM", {-1, -1, -1, 1, -1}},
      {"ORBA_DOMAIN_KAM=,ORBA_DOMAIN_FFT=2", {-1, -1, 2, 1, -1}},
      {"orba_domain_kam=4", {-1, -1, -1, -1, -1}},
      {"ORBA_DOMAIN_PDE=9,ORBA_DOMAIN_KAM=4", {-1, -1, -1, 4, -1}},
      {"ORBA_DOMAIN_ALL=2,,=,ORBA_DOMAIN_KAM=4", {2, -1, -1, -1, -1}},  // an empty key ends it
      {"ORBA_DOMAIN_KAM,4", {-1, -1, -1, -1, -1}},  // only = or a blank ends a key
      {"'\"", {-1, -1, -1, -1, -1}}};
  for (const auto& [list, counts] : cases) {
    const ThreadSettings settings = read_from({{"ORBA_DOMAIN_NUM_THREADS", list}});
    EXPECT_EQ(std::to_array(settings.count), counts) << list;
  }
  const ThreadSettings both =
      read_from({{"ORBA_NUM_THREADS", "4"}, {"ORBA_DOMAIN_NUM_THREADS", "ORBA_DOMAIN_ALL=2"}});
  EXPECT_EQ(both.count[0], 4);
}

// The variables of MPI launchers, each before the next.
TEST(ThreadSettings, ProcessesPerNode) {
  Variables variables;
  const struct {
    const char *name, *value;
    int32_t processes;
  } added[] = {{"MPI_LOCALNRANKS", "8", 8},
               {"OMPI_COMM_WORLD_LOCAL_SIZE", "7", 7},
               {"TSL_MPI_PIN_MAPPING", "6", 7},  // the number before a colon
               {"TSL_MPI_PIN_MAPPING", "6:0 0,1 1", 6},
               {"TSL_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE", "3:", 6},
               {"TSL_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE", "3", 3},
               {"ORBA_MPI_PPN", "four", 3},
               {"ORBA_MPI_PPN", "4", 4}};
  for (const auto& [name, value, processes] : added) {
    variables[name] = value;
    EXPECT_EQ(read_from(variables).processes_per_node, processes) << name << '=' << value;
  }
}

// ---- counts ----

TEST(ThreadPolicy, Count) {
  using enum Domain;
  const Variables kam3 = {{"ORBA_NUM_THREADS", "2"},
                          {"ORBA_DOMAIN_NUM_THREADS", "ORBA_DOMAIN_KAM=3"}};
  const Variables fixed = {{"ORBA_DYNAMIC", "false"}, {"ORBA_NUM_THREADS", "16"}};
  const auto mpi = [](const char* name, const char* value) {
    return Variables{{"ORBA_MPI_PPN", "4"}, {name, value}};
  };
  const struct {
    int32_t expected;
    Domain domain;
    int32_t cores;
    Variables variables;
    bool in_parallel = false;
  } cases[] = {// clang-format off
      {3, kam, 8, kam3}, {2, blas, 8, kam3}, {2, all, 8, kam3},
      {2, kam, 2, kam3},  // no more than cores
      {1, kam, 8, kam3, true}, {12, kam, 16, {}}, {8, kam, 8, {}},
      {16, kam, 8, fixed}, {16, kam, 8, fixed, true}, {12, kam, 8, {{"ORBA_DYNAMIC", "false"}}},
      // MPI processes share the cores, when the program may have threads.
      {4, kam, 16, mpi("TSL_MPI_THREAD_LEVEL", "1")},
      {12, kam, 64, mpi("TSL_MPI_THREAD_LEVEL", "3")},
      {1, kam, 7, mpi("TSL_MPI_THREAD_LEVEL", "3")}, {1, kam, 16, mpi("TSL_MPI_THREAD_LEVEL", "0")},
      {1, kam, 16, {{"ORBA_MPI_PPN", "4"}}},
      // Who asks for threads gets them.
      {12, kam, 16, mpi("OMP_NUM_THREADS", "3")}, {6, kam, 16, mpi("ORBA_NUM_THREADS", "6")},
      {12, kam, 16, mpi("ORBA_DYNAMIC", "FALSE")}};
  // clang-format on
  static bool in_parallel;
  const OpenMpQueries openmp = {[] { return in_parallel; }, [] { return 12; }};
  for (const auto& c : cases) {
    in_parallel = c.in_parallel;
    EXPECT_EQ(count_threads(c.domain, read_from(c.variables), c.cores, openmp), c.expected)
        << &c - cases;
  }
}

TEST(ThreadPolicy, Balance) {
  const struct {
    ProcessorCounts processors;
    double cost;  // of an average pair; by hand
  } factors[] = {{{2, 2, 1}, 60000.0},
                 {{2, 1, 1}, 500000.0},
                 {{2, 2, 2}, 9000.0},
                 {{8, 4, 2}, (4 * 9000.0 + 2 * 60000.0 + 1 * 500000.0) / 7},
                 {{128, 64, 2}, (64 * 9000.0 + 62 * 60000.0 + 1 * 500000.0) / 127},
                 {{7, 5, 2}, (3 * 9000.0 + 1 * 60000.0) / 6}};  // uneven: whole parts only
  for (const auto& [processors, cost] : factors) {
    EXPECT_FLOAT_EQ(balance_factor(processors), static_cast<float>(2.0 / cost)) << cost;
  }
  EXPECT_EQ(balance_factor({1, 1, 1}), 0.0f);

  constexpr float kTwoCores = 2.0f / 60000.0f;
  EXPECT_EQ(balance(2, 1000000, 1.4f, kTwoCores), 2);
  EXPECT_EQ(balance(8, 59999, 1.0f, kTwoCores), 1);
  EXPECT_EQ(balance(8, 60001, 1.0f, kTwoCores), 2);
  EXPECT_EQ(balance(8, INT32_MAX, 1792.66f, 2.0f / 9000.0f), 8);
  EXPECT_EQ(balance(8, 1000000, 100.0f, 0.0f), 1);  // a single processor
  EXPECT_EQ(balance(INT32_MAX, 90000, 1.0f, kTwoCores), 3);
}

// ---- the machine ----

// A made-up /sys/devices/system: eight cores with two hardware threads each, i and i + 8, on two
// nodes of odd and even cores; a third node has memory only.
TEST(Topology, MadeUpMachine) {
  namespace fs = std::filesystem;
  const fs::path root = fs::temp_directory_path() / ("orba-" + std::to_string(getpid()));
  const auto write = [&root](const std::string& file, const std::string& text) {
    fs::create_directories((root / file).parent_path());
    std::ofstream(root / file) << text << '\n';
  };
  for (int i = 0; i < 16; ++i) {
    write("cpu/cpu" + std::to_string(i) + "/topology/thread_siblings_list",
          std::to_string(i % 8) + ',' + std::to_string(i % 8 + 8));
  }
  write("node/online", "0-2");
  write("node/node0/cpulist", "0,2,4,6,8,10,12,14");
  write("node/node1/cpulist", "1,3,5,7,9,11,13,15");
  write("node/node2/cpulist", "");
  const std::pair<const char*, std::array<int32_t, 3>> cases[] = {
      {"1111111111111111", {16, 8, 2}}, {"0000000011111111", {8, 8, 2}},
      {"1111111100000000", {8, 8, 2}},  {"0000010100000101", {4, 2, 1}},  // 0, 2 and siblings
      {"1000000000000000", {1, 1, 1}},  {"0", {1, 1, 1}}};
  for (const auto& [bits, expected] : cases) {
    const ProcessorCounts counts =
        platform::count_processors(platform::ProcessorSet(bits), root.c_str());
    EXPECT_EQ((std::array{counts.logical, counts.cores, counts.nodes}), expected) << bits;
  }
  fs::remove_all(root);
}

TEST(Topology, ThisMachine) {
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
  const platform::ProcessorSet allowed = platform::allowed_processors();
  for (size_t i = 0; i < CPU_SETSIZE; ++i) EXPECT_EQ(allowed[i], CPU_ISSET(i, &set) != 0);
  const ProcessorCounts counts = platform::count_processors(allowed);
  EXPECT_EQ(counts.logical, CPU_COUNT(&set));
  EXPECT_TRUE(1 <= counts.nodes && counts.nodes <= counts.cores && counts.cores <= counts.logical);
  // Without a description of the machine each processor is a core of one node.
  const ProcessorCounts bare = platform::count_processors(allowed, "/nowhere");
  EXPECT_EQ(bare.cores, bare.logical);
  EXPECT_EQ(bare.nodes, 1);
}

// ---- the process ----

TEST(ThreadCount, Words) {
  if (!in_process_with("ORBA_DYNAMIC=FALSE ORBA_NUM_THREADS=5 ORBA_NUM_STRIPES=7 "
                       "ORBA_DOMAIN_NUM_THREADS=ORBA_DOMAIN_KAM=3 "
                       "ORBA_MPI_PPN=99999999999999999999999")) {
    return;
  }
  // All at once for the first query.
  test::on_threads(8, [](int) {
    errno = 33;
    EXPECT_EQ(thread_count(Domain::kam), 3);
    EXPECT_EQ(errno, 33);
    EXPECT_EQ(thread_count(Domain::fft), 5);
    EXPECT_FALSE(dynamic_threads());
    EXPECT_EQ(stripe_count(), 7);
  });

  setenv("ORBA_NUM_THREADS", "9", 1);  // too late to matter
  EXPECT_EQ(thread_count(Domain::all), 5);

  const ProcessorCounts machine = platform::count_processors(platform::allowed_processors());
  EXPECT_EQ(logical_processors(), machine.logical);
  EXPECT_EQ(node_count(), machine.nodes);
  EXPECT_EQ(cores_per_node(), machine.cores / machine.nodes);

  EXPECT_EQ(set_local_thread_count(2), 0);
  EXPECT_EQ(thread_count(Domain::kam), 2);
  EXPECT_EQ(in_new_thread([] { return thread_count(Domain::kam); }), 3);
  EXPECT_EQ(set_local_thread_count(0), 2);
  EXPECT_EQ(thread_count(Domain::kam), 3);

  int32_t balanced = 4;
  EXPECT_EQ(balance_threads(&balanced, 1, 0.0f), 1);
  EXPECT_EQ(balanced, 1);
}

// A runtime that binds its threads pins the first one to a single place.
TEST(ThreadCount, BoundThreads) {
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
  if (!in_process_with("OMP_PROC_BIND=true PROCESSORS=" + std::to_string(CPU_COUNT(&set)))) return;
  EXPECT_EQ(std::to_string(logical_processors()), getenv("PROCESSORS"));
}

TEST(ThreadCount, InParallelRegion) {
  if (!in_process_with("ORBA_NUM_THREADS=2")) return;
#pragma omp parallel num_threads(2)
  {
    EXPECT_EQ(thread_count(Domain::kam), 1);
    set_local_thread_count(3);
    EXPECT_EQ(thread_count(Domain::kam), 3);
    set_local_thread_count(0);
  }
}

}  // namespace
}  // namespace orba::services
