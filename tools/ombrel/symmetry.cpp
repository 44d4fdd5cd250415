#include "symmetry.h"

#include <gemmi/symmetry.hpp>

namespace stand_in {

namespace lib = gemmi;

struct SpaceGroup::Impl {
  const lib::SpaceGroup* group;
  lib::GroupOps ops;
  lib::ReciprocalAsu asu;
  explicit Impl(const lib::SpaceGroup* g) : group(g), ops(g->operations()), asu(g) {}
};

std::optional<SpaceGroup> SpaceGroup::find(const std::string& symbol, double alpha, double gamma) {
  try {
    const lib::SpaceGroup* g = lib::find_spacegroup_by_name(symbol, alpha, gamma);
    if (g == nullptr) return std::nullopt;
    SpaceGroup s;
    s.impl_ = std::make_shared<const Impl>(g);
    return s;
  } catch (...) {
    return std::nullopt;
  }
}

std::string SpaceGroup::symbol() const { return impl_->group->xhm(); }
int SpaceGroup::number() const { return impl_->group->number; }
std::string SpaceGroup::point_group() const { return impl_->group->point_group_hm(); }
std::string SpaceGroup::laue_class() const { return impl_->group->laue_str(); }
std::string SpaceGroup::crystal_system() const { return impl_->group->crystal_system_str(); }
char SpaceGroup::centring() const { return impl_->group->centring_type(); }
int SpaceGroup::order() const { return impl_->ops.order(); }
int SpaceGroup::point_group_order() const { return static_cast<int>(impl_->ops.sym_ops.size()); }

Absence SpaceGroup::absence(const Hkl& hkl) const {
  for (const auto& t : impl_->ops.cen_ops)
    if ((hkl[0] * t[0] + hkl[1] * t[1] + hkl[2] * t[2]) % lib::Op::DEN != 0) return Absence::centring;
  return impl_->ops.is_systematically_absent(hkl) ? Absence::screw_or_glide : Absence::none;
}

bool SpaceGroup::centric(const Hkl& hkl) const { return impl_->ops.is_reflection_centric(hkl); }

bool SpaceGroup::in_asu(const Hkl& hkl) const { return impl_->asu.is_in(hkl); }

AsuImage SpaceGroup::to_asu(const Hkl& hkl) const {
  try {
    const auto [image, isym] = impl_->asu.to_asu(hkl, impl_->ops);
    return {image, isym % 2 == 0};
  } catch (...) {
    return {hkl, false};  // the tables are consistent; never reached in practice
  }
}

std::vector<Hkl> SpaceGroup::images(const Hkl& hkl) const {
  std::vector<Hkl> out;
  images(hkl, out);
  return out;
}

void SpaceGroup::images(const Hkl& hkl, std::vector<Hkl>& out) const {
  out.clear();
  out.reserve(impl_->ops.sym_ops.size());
  for (const auto& op : impl_->ops.sym_ops) out.push_back(op.apply_to_hkl(hkl));
}

}  // namespace stand_in
