// Daily prices of some indices from a file, and their returns.
#pragma once

#include <orba.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using Series = std::vector<double>;

// Prices day by day, the indices of one day side by side: a step of one day is a step of
// `indices()` elements, and one vector call works on all indices at once.
struct Prices {
  std::vector<std::string> names;
  Series times;
  Series values;
  int indices() const { return static_cast<int>(names.size()); }
  int days() const { return static_cast<int>(times.size()); }
};

inline std::vector<std::string_view> split(std::string_view line) {
  std::vector<std::string_view> fields;
  while (true) {
    const size_t comma = line.find(',');
    fields.push_back(line.substr(0, comma));
    if (comma == std::string_view::npos) return fields;
    line.remove_prefix(comma + 1);
  }
}

inline double parse_number(std::string_view field) {
  double value = 0;
  const auto [end, error] = std::from_chars(field.begin(), field.end(), value);
  if (error != std::errc() || end != field.end() || !std::isfinite(value)) {
    throw std::runtime_error("\"" + std::string(field) + "\" is not a number");
  }
  return value;
}

inline void parse_row(std::string_view line, Prices& prices) {
  const auto fields = split(line);
  if (fields.size() != prices.names.size() + 1) {
    throw std::runtime_error("a row needs " + std::to_string(prices.names.size() + 1) +
                             " fields, this one has " + std::to_string(fields.size()));
  }
  const double time = parse_number(fields[0]);
  if (!prices.times.empty() && time <= prices.times.back()) {
    throw std::runtime_error("the time does not increase");
  }
  prices.times.push_back(time);
  for (size_t i = 1; i < fields.size(); ++i) {
    const double price = parse_number(fields[i]);
    if (price <= 0) {
      throw std::runtime_error("the price of " + prices.names[i - 1] + " is not positive");
    }
    prices.values.push_back(price);
  }
}

// Throws what is wrong with the file, and when it has fewer than `days` rows.
inline Prices read_prices(const std::string& path, int days) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": " + std::strerror(errno));
  Prices prices;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    try {
      if (number == 1) {
        const auto fields = split(line);
        if (fields.size() < 2) throw std::runtime_error("the header names no index");
        prices.names.assign(fields.begin() + 1, fields.end());
      } else {
        parse_row(line, prices);
      }
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(path + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (prices.days() < days) {
    throw std::runtime_error(path + ": " + std::to_string(prices.days()) + " days are too few, " +
                             std::to_string(days) + " are needed");
  }
  return prices;
}

// ln(p[t+1] / p[t]) for each day but the last: log returns of successive days add up.
inline Series daily_returns(const Series& prices, int indices) {
  const int n = static_cast<int>(prices.size()) - indices;
  Series ratio(static_cast<size_t>(n)), result(ratio.size());
  vdDiv(n, prices.data() + indices, prices.data(), ratio.data());
  vdLn(n, ratio.data(), result.data());  // not in place: the callback shows the ratio
  return result;
}
