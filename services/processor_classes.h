// The processor classes: the one list from which tables, builds, tests and scripts take them.
//
// Every kernel source is compiled once per live class into a build of the class's number (c0, c1,
// ...; the instructions of each are in cmake/OrbaTargets.cmake, which reads the list here). A class
// of the vector layer runs the build of its number. The statistics layer counts the builds through,
// without the empty slot: its class is an index into kBuilds.
//
// Kernel sources include this too, so all of it is preprocessor or constants without a symbol.
#pragma once

// LIVE(number, ...) for a class with a build, EMPTY(number, ...) for the slot without one, in
// ascending order.
#define ORBA_CLASSES(LIVE, EMPTY, ...) \
  LIVE(0 __VA_OPT__(, ) __VA_ARGS__)   \
  LIVE(1 __VA_OPT__(, ) __VA_ARGS__)   \
  LIVE(2 __VA_OPT__(, ) __VA_ARGS__)   \
  LIVE(3 __VA_OPT__(, ) __VA_ARGS__)   \
  EMPTY(4 __VA_OPT__(, ) __VA_ARGS__)  \
  LIVE(5 __VA_OPT__(, ) __VA_ARGS__)

// X(number, ...) per build.
#define ORBA_BUILDS(X, ...) ORBA_CLASSES(X, ORBA_NO_BUILD, __VA_ARGS__)
#define ORBA_NO_BUILD(...)

namespace orba::services {

#define ORBA_LIST_CLASS(c) c,
constexpr int kClasses[] = {ORBA_CLASSES(ORBA_LIST_CLASS, ORBA_LIST_CLASS)};
constexpr int kBuilds[] = {ORBA_BUILDS(ORBA_LIST_CLASS)};
#undef ORBA_LIST_CLASS

constexpr int kClassCount = sizeof(kClasses) / sizeof(kClasses[0]);  // of the vector layer
constexpr int kBuildCount = sizeof(kBuilds) / sizeof(kBuilds[0]);    // of the statistics layer
constexpr int kNewestBuild = kBuilds[kBuildCount - 1];

}  // namespace orba::services
