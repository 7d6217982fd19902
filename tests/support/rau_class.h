// The statistics layer run as on another processor.
#pragma once

#include "services/detect/detect.h"
#include "statistics/frame/dispatch.h"

namespace orba::test {

// Classes of the statistics layer that this processor can run are 0 ... this one.
inline int highest_rau_class() { return services::rau_class(services::rau_cpu_type()); }

// Makes a class the running one while it lives.
class RauClass {
 public:
  explicit RauClass(int number) : old_(statistics::class_word.exchange(number)) {}
  ~RauClass() { statistics::class_word.store(old_); }
  RauClass(const RauClass&) = delete;
  RauClass& operator=(const RauClass&) = delete;

 private:
  int old_;
};

}  // namespace orba::test
