// The statistics layer run as on another processor.
#pragma once

#include "serv/detect/detect.h"
#include "vs/frame/dispatch.h"

namespace orba::test {

// Classes of the statistics layer that this processor can run are 0 ... this one.
inline int highest_rau_class() { return serv::rau_class(serv::rau_cpu_type()); }

// Makes a class the running one while it lives.
class RauClass {
 public:
  explicit RauClass(int number) : old_(vs::class_word.exchange(number)) {}
  ~RauClass() { vs::class_word.store(old_); }
  RauClass(const RauClass&) = delete;
  RauClass& operator=(const RauClass&) = delete;

 private:
  int old_;
};

}  // namespace orba::test
