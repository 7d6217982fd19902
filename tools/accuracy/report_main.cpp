// Measures every kernel densely and writes docs/accuracy.md with plots beside it:
//   accuracy_report DIRECTORY [points] [function...]
// DIRECTORY gets accuracy.md and accuracy/NAME.svg; with functions named (vdInv ...) only their
// figures are printed and nothing is written.

#include <cpuid.h>

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "tests/accuracy/measure.h"

namespace orba::test {
namespace {

template <class... Values>
std::string format(const char* pattern, Values... values) {
  char text[256];
  std::snprintf(text, sizeof text, pattern, values...);
  return text;
}

struct Entry {
  const Subject* subject;
  const Limits* limits;
  Measurement measured;
};

std::string processor() {
  uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
  __get_cpuid(1, &eax, &ebx, &ecx, &edx);
  uint32_t family = eax >> 8 & 0xf, model = eax >> 4 & 0xf;
  if (family == 6 || family == 15) model += eax >> 12 & 0xf0;
  if (family == 15) family += eax >> 20 & 0xff;
  return format("x86-64 family %u model %u", family, model);
}

std::string compiler() {
#ifdef __clang__
  return format("clang %d.%d", __clang_major__, __clang_minor__);
#else
  return format("g++ %d.%d", __GNUC__, __GNUC_MINOR__);
#endif
}

// Relative errors are shown as powers of two, which say how many bits are right.
std::string figure(uint32_t accuracy, double error) {
  if (error == 0) return "0";
  return accuracy == KAM_EP ? format("2^%.2f", std::log2(error)) : format("%.4f", error);
}

void write_table(std::ostream& out, const Entry& entry) {
  const auto& [subject, limits, measured] = entry;
  out << "\n### " << subject->name() << "\n\n";
  out << measured.points << " points for each kernel";
  if (measured.exhaustive) {
    out << ", and all 2^32 arguments for class " << live_classes().back();
  }
  out << ".\n\n";
  if (limits->measure == Measure::kExact) {
    uint64_t wrong = 0;
    for (const Cell& cell : cells(*subject)) {
      wrong += measured.at(cell.classes[0], cell.accuracy).ulp.error != 0;
    }
    out << "Exact by IEEE 754. Kernels with a result that differs in a bit: " << wrong << ".\n";
    return;
  }
  out << "| accuracy | class | largest error | at | limit |\n|---|---|---|---|---|\n";
  std::string classes;
  const std::vector<Cell> all = cells(*subject);
  for (size_t i = 0; i < all.size(); ++i) {
    const auto& [accuracy, of_cell] = all[i];
    for (const int kernel_class : of_cell) {
      classes += (classes.empty() ? "" : ", ") + std::to_string(kernel_class);
    }
    const auto row = [&](const Cell& cell) {
      const Peak& peak = measured.at(cell.classes[0], cell.accuracy).peak(cell.accuracy);
      return figure(cell.accuracy, peak.error) + " | `" + arguments(*subject, peak) + "` | " +
             figure(cell.accuracy, limits->limit(cell.accuracy));
    };
    const bool last = i + 1 == all.size() || all[i + 1].accuracy != accuracy;
    if (!last && row(all[i + 1]) == row(all[i])) continue;
    out << "| " << accuracy_name(accuracy) << " | " << classes << " | " << row(all[i]) << " |\n";
    classes.clear();
  }
  if (limits->plot.axis != Axis::kNone) {
    out << "\n![error of " << subject->name() << "](accuracy/" << subject->name() << ".svg)\n";
  }
}

// Two panels over one axis: HA and LA in units of the last place, EP as a power of two.
class Plot {
 public:
  Plot(std::ostream& out, const Entry& entry) : out_(out), entry_(entry) {}

  void write() {
    const auto& [subject, limits, measured] = entry_;
    out_ << format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" font-family=\"sans-serif\""
        " font-size=\"11\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
        kWidth, 2 * kPanel + kTop + 40);
    text(kLeft, 16, "start", subject->name() + ", class " + std::to_string(live_classes().back()));
    key(kLeft + 200, "HA", kColours[0]);
    key(kLeft + 250, "LA", kColours[1]);
    key(kLeft + 300, "EP", kColours[2]);

    const double units = 1.1 * std::max(limits->ha, limits->la);
    panel(kTop, "ulp", 0, units, units > 1.5 ? 0.5 : 0.25);
    curve(kTop, measured.profile.ha, 0, units, kColours[0]);
    curve(kTop, measured.profile.la, 0, units, kColours[1]);
    limit_line(kTop, limits->ha / units, kColours[0]);
    limit_line(kTop, limits->la / units, kColours[1]);

    const double top = std::log2(limits->ep) + 2, low = top - 16;
    std::vector<double> bits = measured.profile.ep;
    for (double& error : bits) {
      if (error >= 0) error = error > 0 ? std::max(std::log2(error) - low, 0.0) : 0.0;
    }
    panel(kTop + kPanel, "log2 relative", low, top, 4);
    curve(kTop + kPanel, bits, 0, top - low, kColours[2]);
    limit_line(kTop + kPanel, 14.0 / 16, kColours[2]);
    axis();
    out_ << "</svg>\n";
  }

 private:
  static constexpr int kWidth = 640, kLeft = 56, kRight = 12, kTop = 26, kPanel = 130;
  static constexpr int kSpan = kWidth - kLeft - kRight, kInner = kPanel - 16;
  static constexpr const char* kColours[] = {"#0b6e4f", "#c8553d", "#3d5a98"};

  void text(int x, int y, const char* anchor, const std::string& words) {
    out_ << format("<text x=\"%d\" y=\"%d\" text-anchor=\"%s\">", x, y, anchor) << words
         << "</text>\n";
  }
  void line(int x1, int y1, int x2, int y2, const char* style) {
    out_ << format("<path d=\"M%d %dL%d %d\" %s/>\n", x1, y1, x2, y2, style);
  }
  void key(int x, const char* name, const char* colour) {
    line(x, 12, x + 18, 12, format("stroke=\"%s\" stroke-width=\"2\"", colour).c_str());
    text(x + 22, 16, "start", name);
  }
  static int height(int top, double share) {
    return top + kInner - static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * kInner));
  }
  void panel(int top, const char* unit, double low, double high, double step) {
    for (double y = std::ceil(low / step) * step; y <= high; y += step) {
      const int at = height(top, (y - low) / (high - low));
      line(kLeft, at, kWidth - kRight, at, "stroke=\"#ddd\"");
      text(kLeft - 5, at + 4, "end", format("%g", y));
    }
    text(kLeft + 4, top + 10, "start", unit);
  }
  void limit_line(int top, double share, const char* colour) {
    const int at = height(top, share);
    line(kLeft, at, kWidth - kRight, at,
         format("stroke=\"%s\" stroke-dasharray=\"5 4\"", colour).c_str());
  }
  void curve(int top, const std::vector<double>& values, double low, double high,
             const char* colour) {
    out_ << "<path fill=\"none\" stroke=\"" << colour << "\" d=\"";
    bool down = false;
    for (size_t i = 0; i < values.size(); ++i) {
      if (values[i] < 0) {
        down = false;
        continue;
      }
      const int x = kLeft + static_cast<int>((static_cast<double>(i) + 0.5) * kSpan /
                                             static_cast<double>(values.size()));
      out_ << format("%c%d %d", down ? 'L' : 'M', x, height(top, (values[i] - low) / (high - low)));
      down = true;
    }
    out_ << "\"/>\n";
  }
  void axis() {
    const auto& plot = entry_.limits->plot;
    const int y = kTop + 2 * kPanel;
    for (int i = 0; i <= 4; ++i) {
      const double x = plot.low + (plot.high - plot.low) * i / 4;
      text(kLeft + kSpan * i / 4, y,
           i == 0   ? "start"
           : i == 4 ? "end"
                    : "middle",
           format(plot.axis == Axis::kArgument ? "%g" : "2^%.0f", x));
    }
    text(kLeft + kSpan / 2, y + 18, "middle",
         plot.axis == Axis::kResultBinade ? "size of the result" : "argument");
  }

  std::ostream& out_;
  const Entry& entry_;
};

// Runs of so many random points, the default, try all arguments in single precision too.
constexpr int64_t kDense = 1 << 22;

void write_document(const std::filesystem::path& directory, const std::vector<Entry>& entries,
                    int64_t points) {
  std::filesystem::create_directories(directory / "accuracy");
  std::ofstream out(directory / "accuracy.md");
  out << "# Accuracy\n\n"
         "Written by `scripts/update_accuracy`; the tests hold every kernel to the limits "
         "(`tests/accuracy/limits.def`).\n\n"
         "Each kernel of each function is called directly, once per accuracy and processor class, "
         "and compared with values from MPFR (160 bits). Where a table says \"all 2^32 "
         "arguments\", a "
         "single-precision function of one argument was searched exhaustively with values in "
         "double "
         "precision (runs of 4194304 points and more do that), and the largest errors found were "
         "then computed again with MPFR. Arguments are drawn by bit pattern, so that every binade "
         "has its share; the 10,000 neighbours on each side of every threshold of a kernel come on "
         "top. Errors of HA and LA are in units of the last place of the exact result (below the "
         "normal range: of the spacing of denormal numbers), those of EP are relative (to the "
         "smallest normal number at least). Each part of a complex result counts at HA and LA; EP "
         "errors are relative to its larger part. Classes that stand together have the same "
         "largest "
         "error at the same place.\n\n"
         "Measured on "
      << processor() << ", " << compiler() << ", classes";
  for (const int kernel_class : live_classes()) out << ' ' << kernel_class;
  out << "; " << points << " random points. Plots show class " << live_classes().back()
      << ": the largest error in each slice, limits dashed.\n";
  for (const Entry& entry : entries) {
    write_table(out, entry);
    if (entry.limits->plot.axis == Axis::kNone) continue;
    std::ofstream svg(directory / "accuracy" / (entry.subject->name() + ".svg"));
    Plot(svg, entry).write();
  }
}

int run(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "accuracy_report DIRECTORY [points] [function...]\n";
    return 2;
  }
  const int64_t points = argc > 2 ? std::atoll(argv[2]) : kDense;
  std::vector<Entry> entries;
  for (const Subject& subject : subjects()) {
    const auto named = [&](const char* name) { return subject.name() == name; };
    if (argc > 3 && std::none_of(argv + 3, argv + argc, named)) continue;
    const Limits* limits = find_limits(subject.function, subject.type);
    if (limits == nullptr || find_oracle(subject.function, subject.complex()) == nullptr) {
      std::cerr << subject.name() << ": no limits or no oracle\n";
      return 1;
    }
    entries.push_back({&subject, limits, {}});
  }
  std::atomic<size_t> next{0};
  const auto work = [&] {
    for (size_t i = next++; i < entries.size(); i = next++) {
      auto& [subject, limits, measured] = entries[i];
      measured = measure(*subject, *limits, *find_oracle(subject->function, subject->complex()),
                         {.points = points,
                          .exhaustive = points >= kDense,
                          .profile = limits->plot.axis != Axis::kNone});
      std::cerr << subject->name() + " measured\n";
    }
  };
  std::vector<std::thread> workers;
  for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i) workers.emplace_back(work);
  work();
  for (std::thread& worker : workers) worker.join();
  if (argc > 3) {
    for (const Entry& entry : entries) write_table(std::cout, entry);
  } else {
    write_document(argv[1], entries, points);
  }
  return 0;
}

}  // namespace
}  // namespace orba::test

int main(int argc, char** argv) { return orba::test::run(argc, argv); }
