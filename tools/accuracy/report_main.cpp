// Measures every kernel densely and writes docs/accuracy.md with plots beside it:
//   accuracy_report DIRECTORY [--exhaustive] [--scale=N] [function...]
// DIRECTORY gets accuracy.md and accuracy/NAME.svg. The tests' numbers of random points are
// multiplied by N; --exhaustive adds all single-precision arguments. With functions named (vdInv
// ...) the others keep the figures that the document has, if it was measured on the same machine.

#include <cpuid.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <thread>

#include "tools/accuracy/exhaustive.h"

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
  const Oracle* oracle;
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
  const auto& [subject, limits, oracle, measured] = entry;
  out << "\n### " << subject->name() << "\n\n";
  out << measured.points << " points for each kernel";
  if (measured.exhaustive) out << ", and all 2^32 arguments for classes from 3 on";
  out << ".\n\n";
  if (limits->measure == Measure::kExact) {
    const auto wrong = std::count_if(measured.all.begin(), measured.all.end(), [](const auto& m) {
      return m.kept.ulp.error != 0 || m.flushed.ulp.error != 0;
    });
    out << "Exact by IEEE 754. Kernels with a result that differs in a bit: " << wrong << ".\n";
    return;
  }
  out << "| accuracy | class | largest error | at | denormals flushed | limit |\n"
         "|---|---|---|---|---|---|\n";
  std::string classes;
  const auto label = [](const Measured& m) {
    return m.callout ? "callout" : accuracy_name(m.cell.accuracy);
  };
  const auto row = [&](const Measured& m) {
    const uint32_t accuracy = m.cell.accuracy;
    const Peak& peak = m.kept.peak(accuracy);
    return figure(accuracy, peak.error) + " | `" + arguments(*entry.subject, peak) + "` | " +
           figure(accuracy, m.flushed.peak(accuracy).error) + " | " +
           figure(accuracy, entry.limits->limit(accuracy)) + " |\n";
  };
  for (size_t i = 0; i < measured.all.size(); ++i) {
    const Measured& now = measured.all[i];
    for (const int kernel_class : now.cell.classes) {
      classes += (classes.empty() ? "" : ", ") + std::to_string(kernel_class);
    }
    const Measured* next = i + 1 < measured.all.size() ? &now + 1 : nullptr;
    if (next != nullptr && label(*next) == label(now) && row(*next) == row(now)) continue;
    out << "| " << label(now) << " | " << classes << " | " << row(now);
    classes.clear();
  }
  for (const Measured& m : measured.all) {
    if (m.kept.wrong_reports + m.flushed.wrong_reports > 0) {
      out << "\nWrong reports, " << m.name() << ": " << m.kept.first_wrong_report
          << m.flushed.first_wrong_report << "\n";
    }
  }
  if (limits->plot.axis != Axis::kNone) {
    out << "\n![error of " << subject->name() << "](accuracy/" << subject->name() << ".svg)\n";
  }
}

// Two panels over one axis: HA and LA in units of the last place, EP as a power of two. The same
// beside them by the distance from the zoom point, where there is one.
class Plot {
 public:
  Plot(std::ostream& out, const Entry& entry) : out_(out), entry_(entry) {}

  void write() {
    const auto& [subject, limits, oracle, measured] = entry_;
    const auto& zoom = limits->plot.zoom;
    out_ << format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" font-family=\"sans-serif\""
        " font-size=\"11\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
        zoom ? 2 * kWidth : kWidth, 2 * kPanel + kTop + 40);
    text(kLeft, 16, "start", subject->name() + ", class " + std::to_string(live_classes().back()));
    key(kLeft + 200, "HA", kColours[0]);
    key(kLeft + 250, "LA", kColours[1]);
    key(kLeft + 300, "EP", kColours[2]);
    column(measured.whole);
    const auto& plot = limits->plot;
    const char* pattern = plot.axis == Axis::kArgument ? "%g" : "2^%.0f";
    for (int i = 0; i <= 4; ++i)
      tick(i, format(pattern, plot.low + (plot.high - plot.low) * i / 4));
    title(plot.axis == Axis::kResultBinade ? "size of the result" : "argument");
    if (zoom) {
      left_ += kWidth;
      column(measured.zoom);
      const double low = limits->zoom_low();
      for (int i = 0; i <= 4; ++i) {
        tick(i, format("%s2^%.0f",
                       i < 2   ? "-"
                       : i > 2 ? "+"
                               : "\u00b1",
                       i % 4 == 0 ? 0.0
                       : i == 2   ? low
                                  : low / 2));
      }
      title(format("argument - %g", *zoom));
    }
    out_ << "</svg>\n";
  }

 private:
  static constexpr int kWidth = 640, kLeft = 56, kRight = 12, kTop = 26, kPanel = 130;
  static constexpr int kSpan = kWidth - kLeft - kRight, kInner = kPanel - 16;
  static constexpr const char* kColours[] = {"#0b6e4f", "#c8553d", "#3d5a98"};

  void column(const Profile& profile) {
    const Limits* limits = entry_.limits;
    const double units = 1.1 * std::max(limits->ha, limits->la);
    panel(kTop, "ulp", 0, units, units > 1.5 ? 0.5 : 0.25);
    curve(kTop, profile.ha, 0, units, kColours[0]);
    curve(kTop, profile.la, 0, units, kColours[1]);
    limit_line(kTop, limits->ha / units, kColours[0]);
    limit_line(kTop, limits->la / units, kColours[1]);

    const double top = std::log2(limits->ep) + 2, low = top - 16;
    std::vector<double> bits = profile.ep;
    for (double& error : bits) {
      if (error >= 0) error = error > 0 ? std::max(std::log2(error) - low, 0.0) : 0.0;
    }
    panel(kTop + kPanel, "log2 relative", low, top, 4);
    curve(kTop + kPanel, bits, 0, top - low, kColours[2]);
    limit_line(kTop + kPanel, 14.0 / 16, kColours[2]);
  }
  void tick(int quarter, const std::string& words) {
    const char* anchor = quarter == 0 ? "start" : quarter == 4 ? "end" : "middle";
    text(left_ + kSpan * quarter / 4, kTop + 2 * kPanel, anchor, words);
  }
  void title(const std::string& words) {
    text(left_ + kSpan / 2, kTop + 2 * kPanel + 18, "middle", words);
  }
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
      line(left_, at, left_ + kSpan, at, "stroke=\"#ddd\"");
      text(left_ - 5, at + 4, "end", format("%g", y));
    }
    text(left_ + 4, top + 10, "start", unit);
  }
  void limit_line(int top, double share, const char* colour) {
    const int at = height(top, share);
    line(left_, at, left_ + kSpan, at,
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
      const int x = left_ + static_cast<int>((static_cast<double>(i) + 0.5) * kSpan /
                                             static_cast<double>(values.size()));
      out_ << format("%c%d %d", down ? 'L' : 'M', x, height(top, (values[i] - low) / (high - low)));
      down = true;
    }
    out_ << "\"/>\n";
  }
  std::ostream& out_;
  const Entry& entry_;
  int left_ = kLeft;
};

std::string measured_on() {
  std::string text = "Measured on " + processor() + ", " + compiler() + ", classes";
  for (const int kernel_class : live_classes()) text += ' ' + std::to_string(kernel_class);
  return text + ".";
}

// The tables of a document, by function; none if it was measured elsewhere.
std::map<std::string, std::string> tables_of(const std::filesystem::path& document) {
  std::ifstream in(document);
  std::map<std::string, std::string> tables;
  std::string line, name;
  bool here = false;
  while (std::getline(in, line)) {
    here |= line.starts_with(measured_on());
    if (line.starts_with("### ")) name = line.substr(4);
    if (here && !name.empty()) tables[name] += line + '\n';
  }
  return tables;
}

void write_document(const std::filesystem::path& directory, const std::vector<Entry>& entries) {
  std::filesystem::create_directories(directory / "accuracy");
  const std::map<std::string, std::string> before = tables_of(directory / "accuracy.md");
  std::ofstream out(directory / "accuracy.md");
  out << R"(# Accuracy

Written by `scripts/update_accuracy`; the tests hold every kernel to the limits (`tests/accuracy/limits.def`).

Each kernel of each function is called directly, once per accuracy and processor class, and compared with values from MPFR (160 bits). Arguments are drawn so that every binade, denormal ones too, has an equal share near both of its ends and inside; the 4000 neighbours on each side of every threshold of a kernel come on top. Where a table says "all 2^32 arguments", a single-precision function of one argument was searched exhaustively on classes 3 and 5 with values in double precision, and the largest errors found were then computed again with MPFR.

Errors of HA and LA are in units of the last place of the exact result (below the normal range: of the spacing of denormal numbers), those of EP are relative (to the smallest normal number at least). Each part of a complex result counts at HA and LA; EP errors are relative to its larger part. Classes that stand together have the same largest error at the same place. "Callout" is the scalar function that a kernel hands special arguments to, here over all that it may receive, against the limits of HA.

Everything is measured twice. With denormals flushed (`KAM_DENORMALS_FLUSH`) denormal arguments count as zeros of their sign, and where a value within the limit of the exact one is denormal a zero is as good; all other results are held to the same limits.

)" << measured_on()
      << " Plots show class " << live_classes().back()
      << ": the largest error in each slice, limits dashed; functions with a zero that their "
         "argument comes close to also by the distance from it.\n";
  for (const Subject& subject : subjects()) {
    const auto entry = std::ranges::find(entries, &subject, &Entry::subject);
    if (entry == entries.end()) {
      const auto table = before.find(subject.name());
      if (table != before.end()) out << '\n' << table->second;
      continue;
    }
    write_table(out, *entry);
    if (entry->limits->plot.axis == Axis::kNone) continue;
    std::ofstream svg(directory / "accuracy" / (subject.name() + ".svg"));
    Plot(svg, *entry).write();
  }
}

int run(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "accuracy_report DIRECTORY [--exhaustive] [--scale=N] [function...]\n";
    return 2;
  }
  bool exhaustive = false;
  double scale = 4;
  std::vector<std::string> names;
  for (const std::string& argument : std::vector<std::string>(argv + 2, argv + argc)) {
    if (argument == "--exhaustive")
      exhaustive = true;
    else if (argument.starts_with("--scale="))
      scale = std::stod(argument.substr(8));
    else
      names.push_back(argument);
  }
  std::vector<Entry> entries;
  for (const Subject& subject : subjects()) {
    const bool named = std::find(names.begin(), names.end(), subject.name()) != names.end();
    if (!names.empty() && !named) continue;
    const Limits* limits = find_limits(subject.function, subject.type);
    const Oracle* oracle = find_oracle(subject.function, subject.complex());
    if (limits == nullptr || oracle == nullptr) {
      std::cerr << subject.name() << ": no limits or no oracle\n";
      return 1;
    }
    entries.push_back({&subject, limits, oracle, {}});
  }
  std::atomic<size_t> next{0};
  const auto work = [&] {
    for (size_t i = next++; i < entries.size(); i = next++) {
      auto& [subject, limits, oracle, measured] = entries[i];
      measured =
          measure(*subject, *limits, *oracle, static_cast<int64_t>(1000 * scale * limits->points),
                  limits->plot.axis != Axis::kNone);
      std::cerr << subject->name() + " measured\n";
    }
  };
  std::vector<std::thread> workers;
  for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i) workers.emplace_back(work);
  work();
  for (std::thread& worker : workers) worker.join();
  for (auto& [subject, limits, oracle, measured] : entries) {
    if (!exhaustive || !has_exhaustive(*subject, *limits, *oracle)) continue;
    const auto start = std::chrono::steady_clock::now();
    measure_exhaustively(*subject, *limits, *oracle, measured);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    std::cerr << subject->name() << ", all arguments: " << spent.count() << " s\n";
  }
  write_document(argv[1], entries);
  return 0;
}

}  // namespace
}  // namespace orba::test

int main(int argc, char** argv) { return orba::test::run(argc, argv); }
