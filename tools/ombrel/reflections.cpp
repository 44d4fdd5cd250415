#include "reflections.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <vector>

namespace stand_in {

namespace {

std::vector<std::string_view> words(std::string_view line) {
  std::vector<std::string_view> w;
  constexpr std::string_view separators = " \t,";
  auto start = line.find_first_not_of(separators);
  while (start != std::string_view::npos) {
    const auto end = line.find_first_of(separators, start);
    w.push_back(line.substr(start, end - start));
    start = end == std::string_view::npos ? end : line.find_first_not_of(separators, end);
  }
  return w;
}

bool to_int(std::string_view word, int& v) {
  if (!word.empty() && word[0] == '+') word.remove_prefix(1);
  const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), v);
  return ec == std::errc{} && end == word.data() + word.size();
}

bool to_real(std::string_view word, double& v) {
  const std::string w(word);
  char* end = nullptr;
  v = std::strtod(w.c_str(), &end);
  return !w.empty() && end == w.c_str() + w.size() && std::isfinite(v);
}

// Why the line can't be used, or empty when the reflection was stored in `out`.
std::string reflection(std::string_view line, const Job& job, std::string& out) {
  const auto w = words(line);
  if (w.size() < 5) return "fewer than 5 values (h k l intensity sigma)";
  int hkl[3];
  for (int i = 0; i < 3; ++i)
    if (!to_int(w[i], hkl[i])) return "index \"" + std::string(w[i]) + "\" is not an integer";
  double intensity = 0, sigma = 0;
  if (!to_real(w[3], intensity)) return "intensity \"" + std::string(w[3]) + "\" is not a number";
  if (!to_real(w[4], sigma)) return "sigma \"" + std::string(w[4]) + "\" is not a number";
  if (sigma < 0) return "negative sigma";

  long long index[3] = {hkl[0], hkl[1], hkl[2]};
  if (job.transform) {
    const auto& t = *job.transform;
    double x[3];
    for (int i = 0; i < 3; ++i) x[i] = t[i][0] * hkl[0] + t[i][1] * hkl[1] + t[i][2] * hkl[2];
    for (int i = 0; i < 3; ++i) {
      const double r = std::nearbyint(x[i]);
      if (!(std::fabs(r) <= 1e6)) return "indices out of range after the transformation";
      if (std::fabs(x[i] - r) > 1e-3) {
        char buf[160];
        std::snprintf(buf, sizeof buf, "indices %.3f %.3f %.3f after the transformation are not integers",
                      x[0], x[1], x[2]);
        return buf;
      }
      index[i] = static_cast<long long>(r);
    }
  }
  if (job.scale) {
    intensity *= *job.scale;
    sigma *= std::fabs(*job.scale);
  }
  char buf[160];
  std::snprintf(buf, sizeof buf, "%4lld%4lld%4lld%14.3f%12.3f\n", index[0], index[1], index[2],
                intensity, sigma);
  out = buf;
  return {};
}

}  // namespace

Result process(const std::string& path, const Job& job) {
  Result r;
  std::ifstream in(path, std::ios::binary);
  if (path.empty() || !in) {
    r.rej_text = "! The reflection file \"" + path + "\" could not be opened.\n";
    return r;
  }
  r.opened = true;
  r.int_text = "!   h   k   l     intensity       sigma   (from " + path +
               (job.transform ? ", indices transformed" : "") + ")\n";
  r.rej_text = "! Lines of " + path + " that were not used, with the reason.\n";
  std::string line;
  while (std::getline(in, line)) {
    ++r.lines;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const auto first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '!' || line[first] == '#') {
      ++r.comments;
      continue;
    }
    std::string stored;
    const std::string why = reflection(line, job, stored);
    if (why.empty()) {
      r.int_text += stored;
      ++r.written;
    } else {
      char head[32];
      std::snprintf(head, sizeof head, "line %d: ", r.lines);
      r.rej_text += head + why + ": " + line + "\n";
      ++r.rejected;
    }
  }
  return r;
}

}  // namespace stand_in
