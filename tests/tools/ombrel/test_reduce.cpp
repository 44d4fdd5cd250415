// Reduction against cases worked by hand, and against data generated with
// noise of known sigma, whose R_int and <I/sigma> are known in advance.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "reduce.h"

namespace {

using namespace stand_in;
using ::testing::HasSubstr;

Observation obs(double h, double k, double l, double i, double s, int line = 0, int domain = 0) {
  return {{h, k, l}, i, s, line, domain};
}

SpaceGroup group(const char* symbol) {
  auto g = SpaceGroup::find(symbol, 90, 90);
  EXPECT_TRUE(g.has_value()) << symbol;
  return g ? *g : *SpaceGroup::find("P 1", 90, 90);
}

const Merged* find(const Reduction& r, Hkl hkl, int satellite = 0) {
  for (const Merged& m : r.merged)
    if (m.hkl == hkl && m.satellite == satellite) return &m;
  return nullptr;
}

TEST(Symmetry, SymbolsInTheSettingsUsersType) {
  struct Case {
    const char* typed;
    int number;
    const char* laue;
    char centring;
    int order;
  };
  for (const Case& c : {Case{"P 21/c", 14, "2/m", 'P', 4}, {"P 1 21/n 1", 14, "2/m", 'P', 4},
                        {"P m c n", 62, "mmm", 'P', 8}, {"F d -3 m", 227, "m-3m", 'F', 192},
                        {"R -3 c :H", 167, "-3m", 'R', 36}, {"P 63/m m c", 194, "6/mmm", 'P', 24}}) {
    SCOPED_TRACE(c.typed);
    const auto g = SpaceGroup::find(c.typed, 90, 120);
    ASSERT_TRUE(g.has_value());
    EXPECT_EQ(g->number(), c.number);
    EXPECT_EQ(g->laue_class(), c.laue);
    EXPECT_EQ(g->centring(), c.centring);
    EXPECT_EQ(g->order(), c.order);
  }
  EXPECT_FALSE(SpaceGroup::find("P 7/q", 90, 90).has_value());
  EXPECT_FALSE(SpaceGroup::find("", 90, 90).has_value());
}

TEST(Merging, WeightedMeanAndSigmaFromCountingAndSpread) {
  // P -1: h k l and -h -k -l are one reflection. Weights 1/100 and 1/400:
  // <I> = (1 + 0.3) / 0.0125 = 104; counting sigma^2 = 80; spread
  // sum w d^2 = 0.16 + 0.64 = 0.8, over (n-1) sum w: 64; sigma^2 = (80 + 64) / 2.
  const Reduction r = reduce({obs(1, 2, 3, 100, 10), obs(-1, -2, -3, 120, 20), obs(0, 0, 1, 50, 5)}, group("P -1"), {});
  ASSERT_EQ(r.merged.size(), 2u);
  const Merged* m = find(r, {1, 2, 3});
  ASSERT_NE(m, nullptr);
  EXPECT_NEAR(m->intensity, 104, 1e-9);
  EXPECT_NEAR(m->sigma, std::sqrt(72.0), 1e-9);
  EXPECT_EQ(m->n, 2);
  const Merged* single = find(r, {0, 0, 1});
  ASSERT_NE(single, nullptr);
  EXPECT_DOUBLE_EQ(single->sigma, 5);
  // R_int over the pair only: (4 + 16) / 220.
  EXPECT_NEAR(r.overall.rint(), 20.0 / 220.0, 1e-12);
}

TEST(Merging, EquivalentsOfTheLaueClass) {
  // P 2/m, b unique: (h k l), (-h k -l), (h -k l), (-h -k -l) are one; (h k -l) is not.
  const Reduction mono = reduce({obs(1, 2, 3, 10, 1), obs(-1, 2, -3, 12, 1), obs(1, -2, 3, 14, 1),
                                 obs(-1, -2, -3, 16, 1), obs(1, 2, -3, 99, 1)},
                                group("P 2/m"), {});
  ASSERT_EQ(mono.merged.size(), 2u);
  const auto four = std::find_if(mono.merged.begin(), mono.merged.end(), [](const Merged& m) { return m.n == 4; });
  ASSERT_NE(four, mono.merged.end());
  EXPECT_NEAR(four->intensity, 13, 1e-12);

  // m-3m: all 48 permutations with signs of 1 2 3 are one reflection; 1 2 4 another.
  std::vector<Observation> cubic;
  const int p[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
  const double v[3] = {1, 2, 3};
  for (const auto& perm : p)
    for (int signs = 0; signs < 8; ++signs)
      cubic.push_back(obs(v[perm[0]] * (signs & 1 ? -1 : 1), v[perm[1]] * (signs & 2 ? -1 : 1),
                          v[perm[2]] * (signs & 4 ? -1 : 1), 100 + signs, 10));
  cubic.push_back(obs(4, 2, 1, 7, 1));
  const Reduction r = reduce(cubic, group("P m -3 m"), {});
  ASSERT_EQ(r.merged.size(), 2u);
  EXPECT_EQ(r.merged[0].n + r.merged[1].n, 49);
  EXPECT_EQ(std::max(r.merged[0].n, r.merged[1].n), 48);
  EXPECT_NEAR(std::max(r.merged[0].intensity, r.merged[1].intensity), 103.5, 1e-9);
}

TEST(Merging, FriedelPairsApartOnlyWhenTheLawDoesNotHold) {
  // Point group 2: (h k l) and (-h k -l) are equivalent; (-h -k -l) only by Friedel's law.
  const std::vector<Observation> data = {obs(1, 2, 3, 100, 5), obs(-1, 2, -3, 104, 5), obs(-1, -2, -3, 80, 5),
                                         obs(1, -2, 3, 84, 5)};
  Settings on;
  const Reduction merged = reduce(data, group("P 2"), on);
  ASSERT_EQ(merged.merged.size(), 1u);
  EXPECT_NEAR(merged.merged[0].intensity, 92, 1e-9);

  Settings off;
  off.friedel = false;
  const Reduction apart = reduce(data, group("P 2"), off);
  ASSERT_EQ(apart.merged.size(), 2u);
  EXPECT_NEAR(apart.merged[0].intensity + apart.merged[1].intensity, 184, 1e-9);
  // The mates are written with opposite indices.
  const Hkl a = apart.merged[0].hkl, b = apart.merged[1].hkl;
  EXPECT_EQ(a, (Hkl{-b[0], -b[1], -b[2]}));
  // A centric reflection (h 0 l in 2/m) has no separate mate.
  const Reduction centric = reduce({obs(1, 0, 3, 10, 1), obs(-1, 0, -3, 10, 1)}, group("P 2"), off);
  EXPECT_EQ(centric.merged.size(), 1u);
}

TEST(Merging, SystematicAbsencesAreSetApartWithTheirReason) {
  const Reduction f = reduce({obs(1, 0, 0, 5, 1, 7), obs(1, 1, 1, 50, 1, 8), obs(2, 0, 0, 40, 1, 9)}, group("F m -3 m"), {});
  ASSERT_EQ(f.absences.size(), 1u);
  EXPECT_EQ(f.absences[0].hkl, (Hkl{1, 0, 0}));
  EXPECT_EQ(f.absences[0].why, Absence::centring);
  ASSERT_EQ(f.rejected.size(), 1u);
  EXPECT_EQ(f.rejected[0].line, 7);
  EXPECT_THAT(f.rejected[0].reason, HasSubstr("lattice centring F"));
  EXPECT_EQ(f.merged.size(), 2u);

  // P 21/c: 0 k 0 with k odd (screw), h 0 l with l odd (glide).
  const Reduction p = reduce({obs(0, 1, 0, 1, 1), obs(0, 2, 0, 9, 1), obs(1, 0, 1, 1, 1), obs(1, 0, 2, 9, 1)},
                             group("P 21/c"), {});
  ASSERT_EQ(p.absences.size(), 2u);
  EXPECT_EQ(p.absences[0].why, Absence::screw_or_glide);
  EXPECT_EQ(p.merged.size(), 2u);
}

TEST(Merging, OutliersAreRejectedOnlyWhenTheGroupCanTell) {
  // Three agree, one is 50 sigma off: it goes, the mean is that of the three.
  const Reduction r = reduce({obs(1, 0, 0, 100, 2, 1), obs(-1, 0, 0, 102, 2, 2), obs(1, 0, 0, 98, 2, 3),
                              obs(-1, 0, 0, 200, 2, 4)},
                             group("P -1"), {});
  EXPECT_EQ(r.outliers, 1);
  ASSERT_EQ(r.merged.size(), 1u);
  EXPECT_NEAR(r.merged[0].intensity, 100, 1e-9);
  EXPECT_EQ(r.merged[0].n, 3);
  ASSERT_EQ(r.rejected.size(), 1u);
  EXPECT_EQ(r.rejected[0].line, 4);
  EXPECT_THAT(r.rejected[0].reason, HasSubstr("outlier: more than 4 sigma"));

  // Two that disagree: nobody can say which is wrong, both stay and the
  // spread shows in sigma.
  const Reduction two = reduce({obs(1, 0, 0, 100, 2), obs(-1, 0, 0, 200, 2)}, group("P -1"), {});
  EXPECT_EQ(two.outliers, 0);
  ASSERT_EQ(two.merged.size(), 1u);
  EXPECT_GT(two.merged[0].sigma, 30);
}

TEST(Reduction, TransformationScaleAndSatellites) {
  Settings s;
  s.transform = Matrix{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};
  s.scale = 2;
  const Reduction t = reduce({obs(1, 2, 3, 10, 1)}, group("P 1"), s);
  ASSERT_EQ(t.merged.size(), 1u);
  // (2 -1 3), or its Friedel mate in the asymmetric unit of -1.
  const Hkl h = t.merged[0].hkl;
  EXPECT_TRUE(h == (Hkl{2, -1, 3}) || h == (Hkl{-2, 1, -3}));
  EXPECT_DOUBLE_EQ(t.merged[0].intensity, 20);
  EXPECT_DOUBLE_EQ(t.merged[0].sigma, 2);

  Settings k;
  k.kvec = std::array<double, 3>{0.5, 0, 0};
  const Reduction m = reduce({obs(1.5, 0, 0, 10, 1), obs(-1.5, 0, 0, 12, 1), obs(0.5, 1, 0, 3, 1), obs(0.3, 0, 0, 1, 1),
                              obs(2, 0, 0, 50, 1)},
                             group("P -1"), k);
  EXPECT_EQ(m.satellites, 3);
  EXPECT_EQ(m.unindexed, 1);
  EXPECT_EQ(m.kvec_denominator, 2);
  // 1.5 0 0 and its Friedel mate are one satellite, written as h + k or h - k.
  long satellites = 0, nuclear = 0;
  for (const Merged& x : m.merged) (x.satellite != 0 ? satellites : nuclear) += 1;
  EXPECT_EQ(satellites, 2);
  EXPECT_EQ(nuclear, 1);
  const auto pair = std::find_if(m.merged.begin(), m.merged.end(), [](const Merged& x) { return x.n == 2; });
  ASSERT_NE(pair, m.merged.end());
  EXPECT_NE(pair->satellite, 0);
  EXPECT_DOUBLE_EQ(std::fabs(pair->hkl[0] + 0.5 * pair->satellite), 1.5);
}

TEST(Reduction, TwinDomainsAndDomainCodes) {
  Settings s;
  s.twins = {Matrix{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, Matrix{{{0.5, 0, 0}, {0, 1, 0}, {0, 0, 1}}}};
  const Reduction r = reduce({obs(2, 0, 0, 1, 1), obs(1, 0, 0, 1, 1), obs(0, 0, 3, 1, 1)}, group("P 1"), s);
  ASSERT_EQ(r.twin_on_lattice.size(), 2u);
  EXPECT_EQ(r.twin_on_lattice[0], 3);
  EXPECT_EQ(r.twin_on_lattice[1], 2);  // 1 0 0 goes to 0.5 0 0
  EXPECT_EQ(r.twin_overlapped, 1);     // 2 0 0 lands on 1 0 0; 0 0 3 on itself

  // Codes: -2 then 1 is one spot of two domains; 1 alone is merged; 2 alone is not.
  Settings c;
  c.domain_codes = true;
  const Reduction d =
      reduce({obs(1, 0, 0, 5, 1, 1, -2), obs(1, 0, 0, 5, 1, 2, 1), obs(0, 1, 0, 9, 1, 3, 1), obs(0, 0, 1, 9, 1, 4, 2)},
             group("P 1"), c);
  EXPECT_EQ(d.merged.size(), 1u);
  EXPECT_EQ(d.domain_overlap_groups, 1);
  EXPECT_EQ(d.other_domains, 3);
  EXPECT_EQ(d.domain_code_lines.at(1), 2);
  EXPECT_EQ(d.domain_code_lines.at(2), 2);
}

TEST(Reduction, ShellsAndCompletenessFromTheCell) {
  // P 1 with a 10 A cube: every reflection up to 1 1 1 measured once.
  std::vector<Observation> all;
  for (int h = -1; h <= 1; ++h)
    for (int k = -1; k <= 1; ++k)
      for (int l = 0; l <= 1; ++l)
        if ((l > 0 || k > 0 || (k == 0 && h > 0))) all.push_back(obs(h, k, l, 100, 10));
  Settings s;
  s.cell = std::array<double, 6>{10, 10, 10, 90, 90, 90};
  const Reduction r = reduce(all, group("P -1"), s);
  EXPECT_EQ(r.merged.size(), 13u);
  ASSERT_TRUE(r.completeness_known);
  EXPECT_EQ(r.overall.possible, 13);
  double smax = 0;
  for (const Merged& m : r.merged) smax = std::max(smax, m.stol);
  EXPECT_NEAR(smax, std::sqrt(3.0) / 20, 1e-12);
  // Without Friedel's law the mates count apart, and the data are half complete.
  s.friedel = false;
  const Reduction apart = reduce(all, group("P 1"), s);
  EXPECT_EQ(apart.overall.possible, 26);
  EXPECT_EQ(apart.overall.unique, 13);
}

// Data with Gaussian noise of known sigma in m-3m: every unique reflection is
// measured n times at random equivalent positions.
TEST(Statistics, RintAndIOverSigmaAgreeWithTheNoise) {
  constexpr int kMeasurements = 8;
  constexpr double kCell = 12, kStolMax = 0.5;
  std::mt19937 rng(2026);
  std::normal_distribution<double> gauss(0, 1);
  std::uniform_int_distribution<int> pick(0, 47);
  std::vector<Observation> data;
  double rint_num = 0, rint_var = 0, rint_den = 0, ios = 0;
  long unique = 0;
  const int hmax = static_cast<int>(2 * kStolMax * kCell);
  for (int h = 0; h <= hmax; ++h)
    for (int k = 0; k <= h; ++k)
      for (int l = 0; l <= k; ++l) {
        if (h == 0 || std::sqrt(h * h + k * k + l * l) / (2 * kCell) > kStolMax) continue;
        const double intensity = 200 + 50 * ((h * 7 + k * 3 + l) % 13), sigma = 5 + 0.05 * intensity;
        ++unique;
        for (int n = 0; n < kMeasurements; ++n) {
          const int op = pick(rng), perm[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
          const int v[3] = {h, k, l};
          const int* p = perm[op % 6];
          data.push_back(obs(v[p[0]] * (op & 8 ? -1 : 1), v[p[1]] * (op & 16 ? -1 : 1), v[p[2]] * (op & 32 ? -1 : 1),
                             intensity + sigma * gauss(rng), sigma));
        }
        const double n = kMeasurements;
        // E|I_j - <I>| = sigma sqrt((n-1)/n) sqrt(2/pi); its variance per observation
        // is sigma^2 (n-1)/n (1 - 2/pi).
        rint_num += n * sigma * std::sqrt((n - 1) / n) * std::sqrt(2 / std::numbers::pi);
        rint_var += n * sigma * sigma * (n - 1) / n * (1 - 2 / std::numbers::pi);
        rint_den += n * intensity;
        // 1/sigma(<I>) is estimated from the n measurements: second-order lift.
        ios += intensity / (sigma / std::sqrt(n)) * (1 + 3 * (n - 1) / (4 * n * n));
      }
  Settings s;
  s.cell = std::array<double, 6>{kCell, kCell, kCell, 90, 90, 90};
  const Reduction r = reduce(data, group("P m -3 m"), s);
  ASSERT_EQ(static_cast<long>(r.merged.size()), unique);
  const double rint = rint_num / rint_den, rint_spread = std::sqrt(rint_var) / rint_den;
  EXPECT_NEAR(r.overall.rint(), rint, 4 * rint_spread);
  const double expected_ios = ios / static_cast<double>(unique);
  // Each 1/sigma(<I>) scatters by about 1/sqrt(2(n-1)): the mean of the unique ones by that over sqrt(N).
  const double ios_spread = expected_ios / std::sqrt(2.0 * (kMeasurements - 1) * static_cast<double>(unique));
  EXPECT_NEAR(r.overall.mean_i_over_sigma(), expected_ios, 4 * ios_spread);
  EXPECT_EQ(r.overall.possible, unique);
  EXPECT_LE(r.outliers, 2);
}

}  // namespace
