// Pack and unpack against their definitions, element by element: every pattern in arrays of any
// alignment that end, or begin, where memory does.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <cstring>
#include <random>
#include <string_view>

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

const size_t kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));

// Memory between two pages that must not be touched. It stays for good.
struct Region {
  static constexpr size_t kBytes = 1 << 16;
  char *begin, *end;

  Region() {
    void* const all =
        mmap(nullptr, kBytes + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    begin = static_cast<char*>(all) + kPage;
    end = begin + kBytes;
    mprotect(begin, kBytes, PROT_READ | PROT_WRITE);
  }
};

// An element's way: its place in a, its place in y.
struct Move {
  int64_t from, to;
};

// The definitions: what happens in which order. d is the increment, the mask or the index vector.
std::vector<Move> moves(std::string_view function, int n, const std::vector<int32_t>& d) {
  const char letter = function.back();
  std::vector<Move> list;
  for (int64_t i = 0; i < n; ++i) {
    if (letter == 'M' && d[i] == 0) continue;
    const int64_t dense = static_cast<int64_t>(list.size());
    const int64_t place = letter == 'I' ? i * d[0] : letter == 'M' ? i : d[i];
    list.push_back(function[0] == 'U' ? Move{dense, place} : Move{place, dense});
  }
  return list;
}

// The array that holds just the elements which moves touch, at the end or at the beginning of a region
// but for `shift` bytes.
char* placed(const Region& region, const std::vector<Move>& list, int64_t Move::*place, size_t size,
             bool at_end, int shift) {
  int64_t low = 0, high = -1;
  if (!list.empty()) {
    const auto less = [place](const Move& p, const Move& q) { return p.*place < q.*place; };
    const auto [first, last] = std::minmax_element(list.begin(), list.end(), less);
    low = (*first).*place, high = (*last).*place;
  }
  const auto bytes = static_cast<int64_t>(size);
  return at_end ? region.end - shift - (high + 1) * bytes : region.begin + shift - low * bytes;
}

std::vector<std::vector<int32_t>> patterns(char letter, int n) {
  if (letter == 'I') return {{1}, {-1}, {0}, {2}, {3}, {-7}};
  std::mt19937 random(static_cast<unsigned>(n));
  std::vector<std::vector<int32_t>> list;
  const auto add = [&](auto entry) {
    std::vector<int32_t> d(n);
    for (int i = 0; i < n; ++i) d[i] = entry(i);
    list.push_back(d);
  };
  if (letter == 'M') {
    add([](int) { return 0; });
    add([](int) { return INT32_MIN; });  // any bit selects
    add([](int i) { return i % 2 << 8; });
    add([&](int i) { return i == n / 2 ? -1 : 0; });
    add([&](int i) { return i == 0 || i == n - 1; });
    add([&](int) { return static_cast<int>(random() % 2); });
    add([&](int i) { return random() % 8 > static_cast<unsigned>(i / 32 % 8) ? 1 << 16 : 0; });
  } else {
    add([](int i) { return i; });
    add([&](int i) { return n - 1 - i; });
    add([](int) { return 5; });
    add([&](int) { return static_cast<int>(random() % 41) - 20; });  // with repetitions
    add([&](int i) { return i / 3 * 4; });
  }
  return list;
}

const std::vector<Subject>& packing_subjects() {
  static const std::vector<Subject> list = [] {
    std::vector<Subject> all = {
#define ORBA_KAM_FUNCTION ORBA_SUBJECTS
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
    };
    std::erase_if(all, [](const Subject& s) { return s.kind != vector::CallKind::lean; });
    return all;
  }();
  return list;
}

// Signalling NaNs in every other place; a floating-point operation on one would trap.
void fill_elements(const Subject& subject, const Region& region) {
  const bool single = subject.type == 's' || subject.type == 'c';
  auto* const words = reinterpret_cast<uint32_t*>(region.begin);
  for (uint32_t i = 0; i < Region::kBytes / sizeof(uint32_t); ++i) {
    words[i] = i % 2 == 0 ? i * 2654435761u : (single ? 0x7f800001 : 0x7ff00000) + i;
  }
}

void invoke_trapping(const Subject& subject, const Cell& cell, int n, const Operands& x) {
  constexpr uint32_t kUnmaskedToZero = 0x6000;
  const WordsScope words(cell.accuracy);
  const uint32_t old = _mm_getcsr();
  _mm_setcsr(kUnmaskedToZero);
  subject.invoke(subject.kernel(cell.classes[0], cell.accuracy), n, x);
  const uint32_t after = _mm_getcsr();
  _mm_setcsr(old);
  EXPECT_EQ(after, kUnmaskedToZero);
  EXPECT_EQ(vector::status(), KAM_STATUS_OK);
}

class Packing : public testing::TestWithParam<Subject> {
 protected:
  // Calls action(cell, size of an element) for every distinct kernel of the functions of a letter.
  template <class Action>
  void for_each_cell(std::string_view letters, Action&& action) {
    const Subject& subject = GetParam();
    if (letters.find(std::string_view(subject.function).back()) == std::string_view::npos) return;
    const size_t size = (subject.type == 's' || subject.type == 'c' ? 4u : 8u) * subject.parts_in;
    for (const Cell& cell : cells(subject)) {
      SCOPED_TRACE(cell.name());
      action(cell, size);
    }
  }
};
INSTANTIATE_TEST_SUITE_P(All, Packing, testing::ValuesIn(packing_subjects()),
                         [](const auto& subject) { return subject.param.name(); });

TEST_P(Packing, MovesWhatIsDescribedAndNothingElse) {
  const Subject& subject = GetParam();
  static const Region a_region, y_region, d_region;
  fill_elements(subject, a_region);
  std::vector<char> untouched(Region::kBytes), want;
  for (size_t i = 0; i < untouched.size(); ++i) untouched[i] = static_cast<char>(i * 7 + 1);
  for_each_cell("IMV", [&](const Cell& cell, size_t size) {
    for (const int n :
         {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 23, 31, 33, 64, 127, 128, 129, 300}) {
      for (const std::vector<int32_t>& d :
           patterns(subject.function[strlen(subject.function) - 1], n)) {
        const std::vector<Move> list = moves(subject.function, n, d);
        for (const auto& [at_end, shift] :
             {std::pair(true, 0), {false, 0}, {true, 1}, {false, 6}}) {
          char* const a = placed(a_region, list, &Move::from, size, at_end, shift);
          char* const y = placed(y_region, list, &Move::to, size, at_end, shift);
          char* const entries =
              at_end ? d_region.end - shift - 4 * d.size() : d_region.begin + shift;
          std::memcpy(entries, d.data(), 4 * d.size());
          std::memcpy(y_region.begin, untouched.data(), untouched.size());
          want = untouched;
          for (const auto& [from, to] : list) {
            const auto bytes = static_cast<int64_t>(size);
            std::memcpy(&want[y - y_region.begin + to * bytes], a + from * bytes, size);
          }
          invoke_trapping(subject, cell, n, {{a, entries}, {y}, d.data()});
          ASSERT_EQ(std::memcmp(y_region.begin, want.data(), want.size()), 0)
              << "n=" << n << " shift=" << shift << (at_end ? " at the end" : " at the beginning");
        }
      }
    }
  });
}

// Products of place and increment that don't fit in 32 bits, over memory of which only the elements'
// pages exist.
TEST_P(Packing, CountsIncrementsIn64Bits) {
  const Subject& subject = GetParam();
  for_each_cell("I", [&](const Cell& cell, size_t size) {
    constexpr int n = 9;
    constexpr int32_t step = (1 << 29) + 1;
    const size_t span = (n - 1) * size_t{step} * size + 2 * kPage;
    void* const all =
        mmap(nullptr, span, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(all, MAP_FAILED);
    char* const low = static_cast<char*>(all) + kPage / 2;  // no element lies across pages
    for (const int32_t increment : {step, -step}) {
      char* const base = increment > 0 ? low : low + (n - 1) * size_t{step} * size;
      const auto sparse = [&](int i) {
        return base + int64_t{i} * increment * static_cast<int64_t>(size);
      };
      std::vector<char> dense(n * size), got(n * size);
      const bool unpack = subject.function[0] == 'U';
      for (int i = 0; i < n; ++i) {
        const auto page = reinterpret_cast<uintptr_t>(sparse(i)) & ~(kPage - 1);
        mprotect(reinterpret_cast<void*>(page), 2 * kPage, PROT_READ | PROT_WRITE);
        std::memset(&dense[i * size], 'a' + i, size);
        std::memset(sparse(i), unpack ? '-' : 'a' + i, size);
      }
      if (unpack) {
        invoke_trapping(subject, cell, n, {{dense.data()}, {base}, &increment});
        for (int i = 0; i < n; ++i) std::memcpy(&got[i * size], sparse(i), size);
      } else {
        invoke_trapping(subject, cell, n, {{base}, {got.data()}, &increment});
      }
      EXPECT_EQ(got, dense);
    }
    munmap(all, span);
  });
}

// Not even with the value that they have: they may be somebody else's, or lie where nothing can be
// written.
TEST_P(Packing, UnpackByMaskDoesNotRewriteOtherElements) {
  const Subject& subject = GetParam();
  if (subject.function != std::string_view("UnpackM")) return;
  static const Region region, dense;
  char* const border = region.begin + kPage;
  for_each_cell("M", [&](const Cell& cell, size_t size) {
    for (const bool second_page : {false, true}) {
      mprotect(second_page ? region.begin : border, kPage, PROT_READ);
      constexpr int n = 60;
      for (int before = 0; before <= n; ++before) {  // elements on the first page
        std::vector<int32_t> mask(n);
        for (int i = 0; i < n; ++i) mask[i] = (i >= before) == second_page && i % 3 != 0;
        invoke_trapping(subject, cell, n,
                        {{dense.begin, mask.data()}, {border - before * size}, nullptr});
      }
      mprotect(region.begin, Region::kBytes, PROT_READ | PROT_WRITE);
    }
  });
}

}  // namespace
}  // namespace orba::test
