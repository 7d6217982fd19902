// Generators through the exported calls, beside those of GSL and the C++ standard library.
#include <gsl/gsl_rng.h>
#include <gsl/gsl_version.h>

#include <memory>
#include <random>
#include <vector>

#include "bench/statistics/families.h"
#include "bench/statistics/timing.h"
#include "include/orba_rau.h"
#include "statistics/streams/brng.h"

namespace orba::bench {
namespace {

using namespace statistics;

constexpr int32_t kLengths[] = {10, 100, 1000, 1000000};

struct Generator {
  const char* name;
  int32_t brng;
  bool can_skip;
};
constexpr Generator kGenerators[] = {
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs, abilities, uniform, blocks) \
  {#Name, (row + 1) << 20, ((abilities)&kSkipAhead) != 0},
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
};

std::shared_ptr<StreamState> make_stream(int32_t brng) {
  StreamState* stream = nullptr;
  rauNewStream(&stream, brng, 777);
  return {stream, [](StreamState* s) { rauDeleteStream(&s); }};
}

// A function of the library over n elements of type Element.
template <class Element, class Draw>
void add_function(const std::string& function, Draw draw) {
  for (const Generator& generator : kGenerators) {
    for (const int32_t n : kLengths) {
      const auto prepare = [=] {
        auto stream = make_stream(generator.brng);
        auto r = std::make_shared<std::vector<Element>>(static_cast<size_t>(n));
        return [=] { draw(stream.get(), n, r->data()); };
      };
      add_classes(function + "/" + generator.name, n, prepare);
    }
  }
}

// A generator that gives one double a call.
template <class Source>
void add_source(const std::string& what, const std::string& peer, Source make) {
  for (const int32_t n : kLengths) {
    const auto prepare = [=] {
      auto next = std::make_shared<decltype(make())>(make());
      auto r = std::make_shared<std::vector<double>>(static_cast<size_t>(n));
      return [=] {
        for (double& x : *r) x = (*next)();
      };
    };
    add_peer(what, peer, n, prepare);
  }
}

template <class Engine>
void add_standard(const std::string& what, const std::string& peer, double unit) {
  add_source(what, peer, [=] {
    return [engine = Engine(777), unit]() mutable { return static_cast<double>(engine()) * unit; };
  });
}

void add_gsl(const std::string& what, const std::string& peer, const gsl_rng_type* type) {
  add_source(what, peer, [=] {
    std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(type), gsl_rng_free);
    return [rng] { return gsl_rng_uniform(rng.get()); };
  });
}

}  // namespace

void add_streams() {
  add_function<double>("vdRngUniform", [](StreamState* stream, int32_t n, double* r) {
    vdRngUniform(RAU_METHOD_STD, stream, n, r, 0.0, 1.0);
  });
  add_function<float>("vsRngUniform", [](StreamState* stream, int32_t n, float* r) {
    vsRngUniform(RAU_METHOD_STD, stream, n, r, 0.0f, 1.0f);
  });
  add_function<int32_t>("viRngUniform", [](StreamState* stream, int32_t n, int32_t* r) {
    viRngUniform(RAU_METHOD_STD, stream, n, r, 0, 1000);
  });
  struct Raw {  // the largest output
    uint32_t words[4];
  };
  add_function<Raw>("viRngUniformBits", [](StreamState* stream, int32_t n, Raw* r) {
    viRngUniformBits(RAU_METHOD_STD, stream, n, r->words);
  });
  for (const Generator& generator : kGenerators) {
    if (!generator.can_skip) continue;
    add_classes(std::string("rauSkipAheadStream/") + generator.name, 1, [=] {
      auto stream = make_stream(generator.brng);
      return [=] { rauSkipAheadStream(stream.get(), 0x7fffffffffffffff); };
    });
  }

  add_standard<std::minstd_rand>("vdRngUniform/MCG31m1", "std_minstd_rand", 1.0 / 0x7fffffff);
  add_standard<std::minstd_rand>("vdRngUniform/R250", "std_minstd_rand", 1.0 / 0x7fffffff);
  add_gsl("vdRngUniform/R250", "gsl_r250", gsl_rng_r250);
  add_gsl("vdRngUniform/MRG32k3a", "gsl_cmrg", gsl_rng_cmrg);
  constexpr uint64_t kModulus59 = uint64_t{1} << 59;
  using Lcg59 = std::linear_congruential_engine<uint64_t, 302875106592253, 0, kModulus59>;
  add_standard<Lcg59>("vdRngUniform/MCG59", "std_linear_congruential", 1.0 / kModulus59);
}

std::string stream_peer_versions() { return std::string(", GSL ") + gsl_version; }

}  // namespace orba::bench
