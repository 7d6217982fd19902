#include "services/threads/settings.h"

#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace orba::services {
namespace {

constexpr std::string_view kBlanksAndQuotes = " \"'";
constexpr std::string_view kSeparators = " ,;:\"'";
constexpr std::string_view kKeyEnd = " =\"'";
constexpr std::string_view kBlanksAndEquals = " =";

constexpr struct {
  std::string_view key;
  Domain domain;
} kDomainKeys[] = {
    {"ORBA_DOMAIN_ALL", Domain::all},       {"ORBA_DOMAIN_BLAS", Domain::blas},
    {"ORBA_DOMAIN_FFT", Domain::fft},       {"ORBA_DOMAIN_KAM", Domain::kam},
    {"ORBA_DOMAIN_SOLVER", Domain::solver},
};

// Launchers of MPI jobs tell the processes per node in one of these; `end` follows the number.
constexpr struct {
  const char* name;
  char end;
} kProcessesPerNode[] = {
    {"ORBA_MPI_PPN", '\0'},       {"TSL_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE", '\0'},
    {"TSL_MPI_PIN_MAPPING", ':'}, {"OMPI_COMM_WORLD_LOCAL_SIZE", '\0'},
    {"MPI_LOCALNRANKS", '\0'},
};

// Text of a variable, cut off nowhere: a value that is too long counts as absent.
class Value {
 public:
  Value(EnvironmentReader read, const char* name)
      : length_(std::max(read(name, text_, sizeof text_), 0)) {
    text_[length_] = '\0';
  }
  bool absent() const { return length_ == 0; }
  const char* c_str() const { return text_; }
  std::string_view view() const { return {text_, static_cast<size_t>(length_)}; }

 private:
  char text_[256];
  int length_;
};

// Value of a text of digits alone, at most INT32_MAX.
std::optional<int32_t> decimal(std::string_view text) {
  if (text.empty()) return std::nullopt;
  int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = std::min<int64_t>(value * 10 + (c - '0'), INT32_MAX);
  }
  return static_cast<int32_t>(value);
}

// What is not a number asks for one thread: the careful reading of a mistake.
int32_t requested_threads(std::string_view text) { return decimal(text).value_or(1); }

void keep_first(int32_t& word, int32_t value) {
  if (word < 0 && value >= 1) word = value;
}

void skip(std::string_view& text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

std::string_view take_until(std::string_view& text, std::string_view characters) {
  const std::string_view taken = text.substr(0, text.find_first_of(characters));
  text.remove_prefix(taken.size());
  return taken;
}

// "ORBA_DOMAIN_ALL=2, ORBA_DOMAIN_KAM=4", with blanks for = as well.
void read_domain_list(std::string_view text, ThreadSettings& settings) {
  for (;;) {
    skip(text, kSeparators);
    const std::string_view key = take_until(text, kKeyEnd);
    if (key.empty()) return;
    skip(text, kBlanksAndEquals);
    const int32_t threads = requested_threads(take_until(text, kSeparators));
    for (const auto& known : kDomainKeys) {
      if (key == known.key) keep_first(settings.count[static_cast<int>(known.domain)], threads);
    }
  }
}

int32_t parse_dynamic(std::string_view text) {
  skip(text, kBlanksAndQuotes);
  const std::string_view word = take_until(text, kBlanksAndQuotes);
  return word != "FALSE" && word != "false";
}

int32_t read_processes_per_node(EnvironmentReader read) {
  for (const auto& variable : kProcessesPerNode) {
    const Value value(read, variable.name);
    char* end;
    const long number = strtol(value.c_str(), &end, 10);
    if (number > 0 && *end == variable.end) {
      return static_cast<int32_t>(std::min<long>(number, INT32_MAX));
    }
  }
  return -1;
}

int32_t parse_mpi_thread_level(std::string_view text) {
  constexpr int32_t kHighest = 3;
  const int32_t level = decimal(text).value_or(0);
  return level <= kHighest ? level : 0;
}

}  // namespace

ThreadSettings read_thread_settings(EnvironmentReader read) noexcept {
  ThreadSettings settings;
  if (const Value value(read, "ORBA_NUM_THREADS"); !value.absent()) {
    keep_first(settings.count[static_cast<int>(Domain::all)], requested_threads(value.view()));
  }
  settings.stripes = decimal(Value(read, "ORBA_NUM_STRIPES").view()).value_or(-1);
  read_domain_list(Value(read, "ORBA_DOMAIN_NUM_THREADS").view(), settings);
  settings.dynamic = parse_dynamic(Value(read, "ORBA_DYNAMIC").view());
  if (const Value value(read, "OMP_NUM_THREADS"); !value.absent()) {
    keep_first(settings.openmp_count, requested_threads(value.view()));
  }
  settings.processes_per_node = read_processes_per_node(read);
  if (const Value value(read, "TSL_MPI_THREAD_LEVEL"); !value.absent()) {
    settings.mpi_thread_level = parse_mpi_thread_level(value.view());
  }
  return settings;
}

}  // namespace orba::services
