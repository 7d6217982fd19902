// The version that the library tells of itself.
#pragma once

namespace orba::services {

struct Version {
  int major;
  int minor;
  int update;
  const char* label;
  const char* build_date;  // yyyymmdd
  const char* platform;
};

inline constexpr Version kVersion = {
    .major = 2024,
    .minor = 0,
    .update = 1,
    .label = "Product",
    .build_date = "20240215",
    .platform = "Tessel(R) 64 architecture",
};

}  // namespace orba::services
