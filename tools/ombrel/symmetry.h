// The space group of a job, as far as reduction needs it: the point group and
// Laue class, the lattice centring, the absences and the asymmetric unit of
// reciprocal space.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stand_in {

using Hkl = std::array<int, 3>;

enum class Absence { none, centring, screw_or_glide };

struct AsuImage {
  Hkl hkl;
  bool minus;  // reached only through the inversion: the Friedel mate of `hkl`
};

class SpaceGroup {
 public:
  // Any usual setting and spelling ("P 21/c", "P 1 21/n 1", "R -3 c :H");
  // the cell angles tell the rhombohedral from the hexagonal axes when the
  // symbol leaves it open. Nothing for a symbol that names no space group.
  static std::optional<SpaceGroup> find(const std::string& symbol, double alpha, double gamma);

  std::string symbol() const;  // full symbol of the setting found
  int number() const;
  std::string point_group() const;
  std::string laue_class() const;
  std::string crystal_system() const;
  char centring() const;
  int order() const;  // operations including the centring translations
  int point_group_order() const;

  Absence absence(const Hkl& hkl) const;
  bool centric(const Hkl& hkl) const;
  // Whether `hkl` lies in the asymmetric unit of the Laue class; each class
  // of equivalents (Friedel mates included) has one member there.
  bool in_asu(const Hkl& hkl) const;
  // Image in the asymmetric unit of the Laue class.
  AsuImage to_asu(const Hkl& hkl) const;
  // The point-group images of `hkl` (rotations only, no inversion added).
  std::vector<Hkl> images(const Hkl& hkl) const;
  void images(const Hkl& hkl, std::vector<Hkl>& out) const;

 private:
  struct Impl;
  std::shared_ptr<const Impl> impl_;
};

}  // namespace stand_in
