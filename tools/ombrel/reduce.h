// Reduction of the observations of a job: indices transformed and indexed,
// absences set apart, equivalents merged, agreement in shells, completeness.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "job_reader.h"
#include "reflections.h"
#include "symmetry.h"

namespace stand_in {

// An observation further than this many sigma from the mean of the others of
// its group is rejected.
constexpr double kOutlierSigma = 4.0;

struct Settings {
  std::optional<Matrix> transform;  // new indices = T * old
  std::optional<double> scale;      // applied to intensity and sigma
  bool friedel = true;
  std::optional<std::array<double, 3>> kvec;
  bool domains_averaged = false;  // satellites of all arms of the star merged
  std::optional<std::array<double, 6>> cell;
  std::vector<Matrix> twins;  // one per domain, images = M * hkl
  bool domain_codes = false;  // observations carry domain codes (HKL_T 10)
  double outlier_sigma = kOutlierSigma;
};

struct Merged {
  Hkl hkl;
  int satellite;  // 0, or +1 / -1 for hkl + k / hkl - k
  double intensity, sigma;
  int n;        // observations merged
  double stol;  // sin(theta)/lambda, NaN without a cell
};

struct Shell {
  double stol_low = 0, stol_high = 0;
  long observations = 0, unique = 0, possible = 0;
  double rint_num = 0, rint_den = 0, rsigma_num = 0, rsigma_den = 0, i_over_sigma = 0;
  double rint() const { return rint_den > 0 ? rint_num / rint_den : 0; }
  double rsigma() const { return rsigma_den > 0 ? rsigma_num / rsigma_den : 0; }
  double mean_i_over_sigma() const { return unique > 0 ? i_over_sigma / static_cast<double>(unique) : 0; }
};

struct Absent {
  Hkl hkl;
  double intensity, sigma;
  Absence why;
};

struct Reduction {
  long read = 0;          // observations handed in
  long used = 0;          // in the merged reflections
  long unindexed = 0;     // indices not integer, nor h+-k
  long outliers = 0;
  long other_domains = 0;  // HKL_T 10 lines not of domain 1 alone
  long satellites = 0;     // observations indexed as h+-k
  int kvec_denominator = 0;  // smallest n with n*k integer (up to 12); 0 when incommensurate
  std::vector<Absent> absences;
  std::vector<RejectedLine> rejected;
  std::vector<Merged> merged;
  long groups_with_equivalents = 0;
  Shell overall;
  std::vector<Shell> shells;  // empty without a cell
  bool completeness_known = false;
  std::vector<long> twin_on_lattice;  // per twin matrix: images on a lattice node
  long twin_overlapped = 0;           // observations overlapped by another domain
  std::map<int, long> domain_code_lines;
  long domain_overlap_groups = 0;
};

Reduction reduce(std::vector<Observation> observations, const SpaceGroup& group, const Settings& settings);

// 1/d^2 of index triples from a cell (a b c alpha beta gamma, degrees).
class ReciprocalMetric {
 public:
  explicit ReciprocalMetric(const std::array<double, 6>& cell);
  double inverse_d_squared(const std::array<double, 3>& hkl) const;

 private:
  double g_[3][3];
};

}  // namespace stand_in
