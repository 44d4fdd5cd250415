#include "reduce.h"

#include "big_buffer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <unordered_map>

namespace stand_in {

namespace {

constexpr double kIndexTolerance = 1e-3;
constexpr int kMaxDenominator = 12;
// Reflections are looked up in a dense table while its box stays this small.
constexpr long long kDenseTableLimit = 1 << 22;
// Completeness is counted when the sphere of the data holds at most this many index triples.
constexpr long long kCompletenessLimit = 40'000'000;
constexpr int kMaxShells = 10;
constexpr int kReflectionsPerShell = 15;

enum : std::int32_t { kUnknown = -1, kCentringAbsent = -2, kScrewAbsent = -3, kNoRepresentative = -4 };

// Key of a group of equivalents: three indices of 18 bits, the Friedel bit, the kind.
constexpr int kKeyBits = 18;
constexpr std::int64_t kKeyOffset = 1 << (kKeyBits - 1);
enum Kind : std::uint64_t { kNuclear = 0, kSatellite = 1, kIncommensurate = 2 };

std::uint64_t pack(const Hkl& q, bool minus, Kind kind) {
  std::uint64_t key = 0;
  for (int x : q) key = (key << kKeyBits) | static_cast<std::uint64_t>(x + kKeyOffset);
  return (key << 3) | (static_cast<std::uint64_t>(minus) << 2) | kind;
}

struct Group {
  Hkl hkl;  // as written: the Friedel mate already negated
  int satellite;
  std::array<double, 3> position;  // reciprocal-lattice coordinates, for the resolution
};

bool same_hkl(const Hkl& a, const Hkl& b) { return a[0] == b[0] && a[1] == b[1] && a[2] == b[2]; }

bool near_integer(double x) { return std::fabs(x - std::nearbyint(x)) <= kIndexTolerance; }

// Indices that came in as whole numbers in range need no rounding.
bool exact_index(const double (&x)[3], Hkl& out) {
  for (int r = 0; r < 3; ++r) {
    if (!(std::fabs(x[r]) <= kMaxIndex)) return false;
    out[r] = static_cast<int>(x[r]);
    if (static_cast<double>(out[r]) != x[r]) return false;
  }
  return true;
}

std::string values_text(const Observation& o) {
  char buf[128];
  std::snprintf(buf, sizeof buf, "%g %g %g %g %g", o.hkl[0], o.hkl[1], o.hkl[2], o.intensity, o.sigma);
  return buf;
}

int denominator(const std::array<double, 3>& k) {
  for (int d = 1; d <= kMaxDenominator; ++d)
    if (near_integer(d * k[0]) && near_integer(d * k[1]) && near_integer(d * k[2])) return d;
  return 0;
}

// Outlier rejection and the merged value of one group; returns the observations kept.
struct GroupResult {
  double mean = 0, sigma = 0, abs_dev = 0, sum_i = 0;
  int n = 0;
};

// The measurements of all groups lie one group after the other; `members`
// are positions among them.
struct Member {
  double intensity, sigma;
  std::int32_t observation;
};
using Measured = std::vector<Member>;

GroupResult merge_group(const Measured& obs, std::vector<std::int32_t>& members, double limit,
                        std::vector<std::int32_t>& dropped) {
  double sw = 0, swi = 0;
  for (auto i : members) {
    const double w = 1 / (obs[i].sigma * obs[i].sigma);
    sw += w;
    swi += w * obs[i].intensity;
  }
  // At most a quarter of a group goes: beyond that the group, not one
  // measurement, is in question.
  const std::size_t most = std::max<std::size_t>(1, members.size() / 4);
  while (members.size() >= 3 && dropped.size() < most) {
    double worst = 0;
    std::size_t at = 0;
    for (std::size_t j = 0; j < members.size(); ++j) {
      const double si = obs[members[j]].sigma, in = obs[members[j]].intensity;
      const double w = 1 / (si * si);
      const double others = sw - w;
      // Squared distance in sigma from the mean of the others.
      const double diff = in - (swi - w * in) / others;
      const double dev2 = diff * diff / (si * si + 1 / others);
      if (dev2 > worst) worst = dev2, at = j;
    }
    if (!(worst > limit * limit)) break;
    const double si = obs[members[at]].sigma, in = obs[members[at]].intensity;
    const double w = 1 / (si * si);
    sw -= w;
    swi -= w * in;
    dropped.push_back(members[at]);
    members.erase(members.begin() + static_cast<std::ptrdiff_t>(at));
  }
  GroupResult g;
  g.n = static_cast<int>(members.size());
  g.mean = swi / sw;
  const double counting2 = 1 / sw;
  double spread = 0;
  for (auto i : members) {
    const double si = obs[i].sigma, in = obs[i].intensity;
    const double d = in - g.mean;
    spread += d * d / (si * si);
    g.abs_dev += std::fabs(d);
    g.sum_i += in;
  }
  // Counting statistics count as one degree of freedom, the spread of the n
  // observations about their mean as n - 1.
  const double spread2 = g.n > 1 ? spread / ((g.n - 1) * sw) : 0;
  g.sigma = std::sqrt((counting2 + (g.n - 1) * spread2) / g.n);
  return g;
}

}  // namespace

ReciprocalMetric::ReciprocalMetric(const std::array<double, 6>& cell) {
  const double rad = std::numbers::pi / 180;
  const double a = cell[0], b = cell[1], c = cell[2];
  const double ca = std::cos(cell[3] * rad), cb = std::cos(cell[4] * rad), cg = std::cos(cell[5] * rad);
  // The real-space metric, inverted.
  const double g[3][3] = {{a * a, a * b * cg, a * c * cb}, {a * b * cg, b * b, b * c * ca}, {a * c * cb, b * c * ca, c * c}};
  const double det = g[0][0] * (g[1][1] * g[2][2] - g[1][2] * g[2][1]) - g[0][1] * (g[1][0] * g[2][2] - g[1][2] * g[2][0]) +
                     g[0][2] * (g[1][0] * g[2][1] - g[1][1] * g[2][0]);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      g_[j][i] = (g[i1][j1] * g[i2][j2] - g[i1][j2] * g[i2][j1]) / det;
    }
}

double ReciprocalMetric::inverse_d_squared(const std::array<double, 3>& h) const {
  double s = 0;
  for (int i = 0; i < 3; ++i) s += h[i] * (g_[i][0] * h[0] + g_[i][1] * h[1] + g_[i][2] * h[2]);
  return s;
}

Reduction reduce(std::vector<Observation> obs, const SpaceGroup& group, const Settings& set) {
  Reduction red;
  red.read = static_cast<long>(obs.size());
  auto reject = [&](const Observation& o, std::string why) {
    red.rejected.push_back({o.line, std::move(why), values_text(o)});
  };

  // Domain codes: a run of negative codes closed by a positive one is one
  // measured spot shared by several domains; only domain 1 alone is merged.
  std::vector<char> keep = big_vector<char>(obs.size(), 1);
  if (set.domain_codes) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < obs.size(); ++i) {
      ++red.domain_code_lines[std::abs(obs[i].domain)];
      if (obs[i].domain < 0 && i + 1 < obs.size()) continue;
      const std::size_t size = i - start + 1;
      if (size > 1) ++red.domain_overlap_groups;
      for (std::size_t j = start; j <= i; ++j) {
        if (size > 1) {
          keep[j] = 0;
          reject(obs[j], "overlap of " + std::to_string(size) + " domains, intensity not shared out");
        } else if (std::abs(obs[j].domain) != 1) {
          keep[j] = 0;
          reject(obs[j], "domain " + std::to_string(std::abs(obs[j].domain)) + " alone");
        }
      }
      red.other_domains += static_cast<long>(size > 1 ? size : (std::abs(obs[start].domain) != 1));
      start = i + 1;
    }
  }

  // Transformation, scale and indexing; q holds D * (h + m k) as integers.
  const int d = set.kvec ? denominator(*set.kvec) : 1;
  red.kvec_denominator = set.kvec ? d : 0;
  const double scale = set.scale.value_or(1.0);
  std::vector<Hkl> index = big_vector<Hkl>(obs.size(), Hkl{});
  std::vector<signed char> sat = big_vector<signed char>(obs.size(), 0);
  Hkl lo{0, 0, 0}, hi{0, 0, 0};
  for (std::size_t i = 0; i < obs.size(); ++i) {
    if (!keep[i]) continue;
    Observation& o = obs[i];
    if (!set.transform && exact_index(o.hkl, index[i])) {
      o.intensity *= scale;
      o.sigma *= std::fabs(scale);
      for (int r = 0; r < 3; ++r) lo[r] = std::min(lo[r], index[i][r]), hi[r] = std::max(hi[r], index[i][r]);
      continue;
    }
    double x[3] = {o.hkl[0], o.hkl[1], o.hkl[2]};
    if (set.transform) {
      const auto& t = *set.transform;
      for (int r = 0; r < 3; ++r) x[r] = t[r][0] * o.hkl[0] + t[r][1] * o.hkl[1] + t[r][2] * o.hkl[2];
    }
    o.intensity *= scale;
    o.sigma *= std::fabs(scale);
    int m = 0;
    if (!(near_integer(x[0]) && near_integer(x[1]) && near_integer(x[2]))) {
      for (int s : {1, -1}) {
        if (!set.kvec || m != 0) break;
        const auto& k = *set.kvec;
        if (near_integer(x[0] - s * k[0]) && near_integer(x[1] - s * k[1]) && near_integer(x[2] - s * k[2])) {
          m = s;
          for (int r = 0; r < 3; ++r) x[r] -= s * k[r];
        }
      }
      if (m == 0) {
        keep[i] = 0;
        ++red.unindexed;
        char buf[160];
        std::snprintf(buf, sizeof buf, "indices %.3f %.3f %.3f are %s", x[0], x[1], x[2],
                      set.kvec ? "neither integer nor h+-k" : "not integer after the transformation");
        reject(o, buf);
        continue;
      }
    }
    bool in_range = true;
    for (int r = 0; r < 3; ++r) {
      if (!(std::fabs(x[r]) <= kMaxIndex)) in_range = false;
      else index[i][r] = static_cast<int>(std::nearbyint(x[r]));
    }
    if (!in_range) {
      keep[i] = 0;
      reject(o, "indices beyond the range +-9999 after the transformation");
      continue;
    }
    sat[i] = static_cast<signed char>(m);
    if (m != 0) {
      ++red.satellites;
      continue;
    }
    for (int r = 0; r < 3; ++r) lo[r] = std::min(lo[r], index[i][r]), hi[r] = std::max(hi[r], index[i][r]);
  }

  // Each distinct index triple is looked at once: absence, then its group.
  long long box = 1;
  for (int r = 0; r < 3; ++r) box *= hi[r] - lo[r] + 1;
  std::vector<std::int32_t> dense = big_vector<std::int32_t>(box <= kDenseTableLimit ? static_cast<std::size_t>(box) : 0, kUnknown);
  std::unordered_map<std::uint64_t, std::int32_t> sparse, groups_by_key;
  std::vector<Group> groups;
  auto group_of = [&](std::uint64_t key, const Group& g) {
    const auto [it, fresh] = groups_by_key.try_emplace(key, static_cast<std::int32_t>(groups.size()));
    if (fresh) groups.push_back(g);
    return it->second;
  };
  auto nuclear = [&](const Hkl& h) -> std::int32_t {
    const Absence a = group.absence(h);
    if (a == Absence::centring) return kCentringAbsent;
    if (a == Absence::screw_or_glide) return kScrewAbsent;
    const AsuImage img = group.to_asu(h);
    const bool minus = !set.friedel && img.minus && !group.centric(h);
    Hkl shown = img.hkl;
    if (minus) shown = {-shown[0], -shown[1], -shown[2]};
    return group_of(pack(img.hkl, minus, kNuclear),
                    {shown, 0, {double(shown[0]), double(shown[1]), double(shown[2])}});
  };
  // Satellites: equivalent under the operations that keep k (or turn it into
  // -k); under all of them when the K-domains are averaged.
  std::vector<std::vector<Hkl>> rotations;  // columns of each rotation as it acts on indices
  auto satellite = [&](const Hkl& h, int m) -> std::int32_t {
    const auto& k = *set.kvec;
    if (d == 0) {
      const Hkl key_h = h;
      return group_of(pack(key_h, m < 0, kIncommensurate),
                      {h, m, {h[0] + m * k[0], h[1] + m * k[1], h[2] + m * k[2]}});
    }
    const Hkl dk{int(std::lround(d * k[0])), int(std::lround(d * k[1])), int(std::lround(d * k[2]))};
    const Hkl q{d * h[0] + m * dk[0], d * h[1] + m * dk[1], d * h[2] + m * dk[2]};
    auto image_k = group.images(dk);
    auto images = group.images(q);
    Hkl best{};
    int best_m = 0;
    bool found = false;
    for (std::size_t r = 0; r < images.size(); ++r) {
      const Hkl rk = image_k[r];
      auto same = [&](int s) {
        for (int c = 0; c < 3; ++c)
          if ((rk[c] - s * dk[c]) % d != 0) return false;
        return true;
      };
      if (!set.domains_averaged && !same(1) && !same(-1)) continue;
      for (int sign : {1, -1}) {
        if (sign < 0 && !set.friedel) continue;
        const Hkl c{sign * images[r][0], sign * images[r][1], sign * images[r][2]};
        // Written as h + k or h - k of the job's own k.
        for (int mm : {1, -1}) {
          bool ok = true;
          for (int j = 0; j < 3; ++j) ok = ok && (c[j] - mm * dk[j]) % d == 0;
          if (ok && (!found || c > best)) best = c, best_m = mm, found = true;
        }
      }
    }
    Hkl hh{(best[0] - best_m * dk[0]) / d, (best[1] - best_m * dk[1]) / d, (best[2] - best_m * dk[2]) / d};
    return group_of(pack(best, false, kSatellite),
                    {hh, best_m, {double(best[0]) / d, double(best[1]) / d, double(best[2]) / d}});
  };

  std::vector<Hkl> reps;
  std::vector<std::int32_t> rep_group;
  const long long ny = hi[1] - lo[1] + 1, nz = hi[2] - lo[2] + 1;
  auto in_box = [&](const Hkl& p) {
    return p[0] >= lo[0] && p[0] <= hi[0] && p[1] >= lo[1] && p[1] <= hi[1] && p[2] >= lo[2] && p[2] <= hi[2];
  };
  auto slot_of = [&](const Hkl& p) {
    return static_cast<std::size_t>(((long long)(p[0] - lo[0]) * ny + (p[1] - lo[1])) * nz + (p[2] - lo[2]));
  };
  // The table is filled orbit by orbit, as the data reach each one: slot =
  // 2 * representative + (reached through the inversion).
  std::vector<signed char> rep_absence, rep_centric;
  std::vector<Hkl> images;
  auto add_orbit = [&](const Hkl& p) {
    const auto r = static_cast<std::int32_t>(reps.size());
    reps.push_back(p);
    rep_group.insert(rep_group.end(), 2, kUnknown);
    rep_absence.push_back(-1);
    rep_centric.push_back(-1);
    group.images(p, images);
    for (const Hkl& q : images) {
      const Hkl mq{-q[0], -q[1], -q[2]};
      if (in_box(mq)) dense[slot_of(mq)] = 2 * r + 1;
      if (in_box(q)) dense[slot_of(q)] = 2 * r;
    }
  };
  // Code of a triple of the box; kNoRepresentative when its class has no
  // member of the asymmetric unit in the box.
  auto code_of = [&](const Hkl& h) {
    std::int32_t& code = dense[slot_of(h)];
    if (code == kUnknown) {
      const Hkl rep = group.to_asu(h).hkl;
      if (in_box(rep) && group.in_asu(rep)) add_orbit(rep);
      if (code == kUnknown) code = kNoRepresentative;
    }
    return code;
  };
  // Absence and centricity hold for a whole class of equivalents: each is
  // worked out once, for its representative.
  auto absence_of_rep = [&](std::size_t r) {
    if (rep_absence[r] < 0) rep_absence[r] = static_cast<signed char>(group.absence(reps[r]));
    return static_cast<Absence>(rep_absence[r]);
  };
  auto centric_of_rep = [&](std::size_t r) {
    if (rep_centric[r] < 0) rep_centric[r] = static_cast<signed char>(group.centric(reps[r]));
    return rep_centric[r] != 0;
  };
  auto from_rep = [&](std::int32_t code) -> std::int32_t {
    std::int32_t& g = rep_group[static_cast<std::size_t>(code)];
    if (g != kUnknown) return g;
    const auto r = static_cast<std::size_t>(code / 2);
    const Hkl& rep = reps[r];
    const Absence a = absence_of_rep(r);
    if (a != Absence::none) return g = a == Absence::centring ? kCentringAbsent : kScrewAbsent;
    const bool minus = !set.friedel && code % 2 == 1 && !centric_of_rep(r);
    const Hkl shown = minus ? Hkl{-rep[0], -rep[1], -rep[2]} : rep;
    return g = group_of(pack(rep, minus, kNuclear), {shown, 0, {double(shown[0]), double(shown[1]), double(shown[2])}});
  };

  std::vector<std::int32_t> gid = big_vector<std::int32_t>(obs.size(), kUnknown);
  for (std::size_t i = 0; i < obs.size(); ++i) {
    if (!keep[i]) continue;
    const Hkl& h = index[i];
    std::int32_t g;
    if (sat[i] != 0) {
      g = satellite(h, sat[i]);
    } else {
      const std::int32_t code = dense.empty() ? kUnknown : code_of(h);
      if (code >= 0) {
        g = from_rep(code);
      } else {
        std::int32_t& slot = sparse.try_emplace(pack(h, false, kNuclear), kUnknown).first->second;
        if (slot == kUnknown) slot = nuclear(h);
        g = slot;
      }
    }
    if (g < 0) {
      keep[i] = 0;
      const Absence why = g == kCentringAbsent ? Absence::centring : Absence::screw_or_glide;
      red.absences.push_back({h, obs[i].intensity, obs[i].sigma, why});
      reject(obs[i], why == Absence::centring
                         ? std::string("systematically absent: lattice centring ") + group.centring()
                         : "systematically absent: screw axis or glide plane of " + group.symbol());
      continue;
    }
    gid[i] = g;
  }

  // Observations by group.
  const std::size_t ng = groups.size();
  std::vector<std::int32_t> start(ng + 1, 0);
  for (std::size_t i = 0; i < obs.size(); ++i)
    if (gid[i] >= 0) ++start[static_cast<std::size_t>(gid[i]) + 1];
  for (std::size_t g = 0; g < ng; ++g) start[g + 1] += start[g];
  const auto members_total = static_cast<std::size_t>(start[ng]);
  Measured measured = big_vector<Member>(members_total, Member{});
  {
    std::vector<std::int32_t> fill(start.begin(), start.end() - 1);
    for (std::size_t i = 0; i < obs.size(); ++i)
      if (gid[i] >= 0) {
        const auto at = static_cast<std::size_t>(fill[static_cast<std::size_t>(gid[i])]++);
        measured[at] = {obs[i].intensity, obs[i].sigma, static_cast<std::int32_t>(i)};
      }
  }

  // Merging, with the resolution of each group.
  std::optional<ReciprocalMetric> metric;
  if (set.cell) metric.emplace(*set.cell);
  red.merged.reserve(ng);
  std::vector<double> abs_dev(ng), sum_i(ng);
  std::vector<std::int32_t> members, dropped;
  for (std::size_t g = 0; g < ng; ++g) {
    members.resize(static_cast<std::size_t>(start[g + 1] - start[g]));
    for (std::size_t j = 0; j < members.size(); ++j) members[j] = start[g] + static_cast<std::int32_t>(j);
    dropped.clear();
    const GroupResult r = merge_group(measured, members, set.outlier_sigma, dropped);
    for (auto& i : dropped) i = measured[static_cast<std::size_t>(i)].observation;
    for (auto i : dropped) {
      char buf[96];
      std::snprintf(buf, sizeof buf, "outlier: more than %g sigma from the mean of its equivalents",
                    set.outlier_sigma);
      reject(obs[static_cast<std::size_t>(i)], buf);
    }
    red.outliers += static_cast<long>(dropped.size());
    const Group& gr = groups[g];
    const double stol = metric ? std::sqrt(metric->inverse_d_squared(gr.position)) / 2
                                 : std::numeric_limits<double>::quiet_NaN();
    red.merged.push_back({gr.hkl, gr.satellite, r.mean, r.sigma, r.n, stol});
    abs_dev[g] = r.abs_dev;
    sum_i[g] = r.sum_i;
    red.used += r.n;
  }

  // Shells of equal volume of reciprocal space.
  double smax = 0;
  for (const auto& m : red.merged)
    if (m.stol > smax) smax = m.stol;
  const int nshells = set.cell && smax > 0
                          ? std::clamp(static_cast<int>(ng) / kReflectionsPerShell, 1, kMaxShells) : 0;
  for (int s = 0; s < nshells; ++s)
    red.shells.push_back({smax * std::cbrt(double(s) / nshells), smax * std::cbrt(double(s + 1) / nshells)});
  auto shell_of = [&](double stol) {
    if (nshells == 0) return -1;
    const int s = static_cast<int>(std::pow(stol / smax, 3) * nshells);
    return std::clamp(s, 0, nshells - 1);
  };
  for (std::size_t g = 0; g < ng; ++g) {
    const Merged& m = red.merged[g];
    for (Shell* sh : {&red.overall, shell_of(m.stol) >= 0 ? &red.shells[static_cast<std::size_t>(shell_of(m.stol))] : nullptr}) {
      if (sh == nullptr) continue;
      sh->observations += m.n;
      ++sh->unique;
      if (m.n > 1) sh->rint_num += abs_dev[g], sh->rint_den += sum_i[g];
      sh->rsigma_num += m.sigma;
      sh->rsigma_den += m.intensity;
      sh->i_over_sigma += m.intensity / m.sigma;
    }
    if (m.n > 1) ++red.groups_with_equivalents;
  }

  // Completeness of the nuclear reflections against the cell and the Laue class.
  if (set.cell && smax > 0) {
    const auto& c = *set.cell;
    long long lim[3], count = 1;
    for (int r = 0; r < 3; ++r) lim[r] = static_cast<long long>(2 * smax * c[r]) + 1, count *= 2 * lim[r] + 1;
    if (count <= kCompletenessLimit) {
      red.completeness_known = true;
      for (long long h = -lim[0]; h <= lim[0]; ++h)
        for (long long k = -lim[1]; k <= lim[1]; ++k)
          for (long long l = -lim[2]; l <= lim[2]; ++l) {
            const Hkl hkl{int(h), int(k), int(l)};
            // A triple of the asymmetric unit in the table is its own representative.
            const std::int32_t code = !dense.empty() && in_box(hkl) ? dense[slot_of(hkl)] : kUnknown;
            const auto r = static_cast<std::size_t>(code / 2);
            const bool known = code >= 0;
            if (known ? !same_hkl(reps[r], hkl) : !group.in_asu(hkl)) continue;
            const double s = std::sqrt(metric->inverse_d_squared({double(h), double(k), double(l)})) / 2;
            if (s > smax * (1 + 1e-9) || (h == 0 && k == 0 && l == 0)) continue;
            if ((known ? absence_of_rep(r) : group.absence(hkl)) != Absence::none) continue;
            // Without Friedel's law an acentric reflection and its mate count apart.
            const long count = !set.friedel && !(known ? centric_of_rep(r) : group.centric(hkl)) ? 2 : 1;
            red.overall.possible += count;
            const int sh = shell_of(s);
            if (sh >= 0) red.shells[static_cast<std::size_t>(sh)].possible += count;
          }
    }
  }

  // Twin domains: where each observation's image through each matrix falls.
  if (!set.twins.empty()) {
    red.twin_on_lattice.assign(set.twins.size(), 0);
    for (std::size_t i = 0; i < obs.size(); ++i) {
      if (gid[i] < 0 || sat[i] != 0) continue;
      bool overlapped = false;
      for (std::size_t t = 0; t < set.twins.size(); ++t) {
        const auto& mt = set.twins[t];
        bool on = true, same = true;
        for (int r = 0; r < 3; ++r) {
          const double x = mt[r][0] * index[i][0] + mt[r][1] * index[i][1] + mt[r][2] * index[i][2];
          on = on && near_integer(x);
          same = same && std::fabs(x - index[i][r]) <= kIndexTolerance;
        }
        if (on) ++red.twin_on_lattice[t];
        if (on && !same) overlapped = true;
      }
      if (overlapped) ++red.twin_overlapped;
    }
  }

  // The merged reflections in a stable order: nuclear first, then by indices.
  std::sort(red.merged.begin(), red.merged.end(), [](const Merged& a, const Merged& b) {
    if ((a.satellite != 0) != (b.satellite != 0)) return a.satellite == 0;
    if (a.hkl != b.hkl) return a.hkl < b.hkl;
    return a.satellite > b.satellite;
  });
  std::sort(red.rejected.begin(), red.rejected.end(),
            [](const RejectedLine& a, const RejectedLine& b) { return a.line < b.line; });
  return red;
}

}  // namespace stand_in
