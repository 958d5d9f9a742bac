#include "analysis/connectivity.h"

#include <algorithm>
#include <cmath>

#include "analysis/bond_radii.h"
#include "io/fortran_io.h"

namespace quintor {

namespace {

constexpr double CovalentScale = 1.15;
constexpr double WeakScale = 1.2;          // on top of the covalent limit
constexpr double HydrogenBondLimit = 2.5;  // A, H with O or N, either way round
constexpr double EquivalenceTolerance = 0.1;

bool HydrogenWithOorN(int zi, int zj) {
  auto acceptor = [](int z) { return z == 7 || z == 8; };
  return (zi == 1 && acceptor(zj)) || (zj == 1 && acceptor(zi));
}

void Walk(int atom, bool weakToo, const NeighbourTable& table, int blockedAtom, int mark,
          std::vector<int>& marks, FloodResult& r) {
  marks[atom - 1] = mark;
  ++r.count;
  const int stored = std::min(table.count[atom - 1], NeighbourSlots);
  for (int s = 0; s < stored; ++s) {
    const int entry = table.slots[atom - 1][s];
    if (entry == 0 || (entry < 0 && !weakToo)) continue;
    const int next = std::abs(entry);
    if (next == blockedAtom) {
      ++r.blockedContacts;
      continue;
    }
    if (marks[next - 1] != mark) Walk(next, weakToo, table, blockedAtom, mark, marks, r);
  }
}

}  // namespace

void Connect(int hbMode, const std::vector<int>& nuclear, const std::vector<Vec3>& xyzAngstrom,
             int maxNeighbours, NeighbourTable& table) {
  const int n = static_cast<int>(xyzAngstrom.size());
  const int keep = std::clamp(maxNeighbours, 0, NeighbourSlots);
  if (table.Atoms() != n) {
    table.count.resize(n);
    table.slots.resize(n);
  }
  for (int i = 0; i < n; ++i) {
    table.count[i] = 0;
    table.slots[i].fill(0);
  }
  for (int i = 0; i < n; ++i) {
    const double ri = BondRadius(nuclear[i]);
    for (int j = 0; j < n; ++j) {
      if (j == i) continue;
      const double dx = xyzAngstrom[i][0] - xyzAngstrom[j][0];
      const double dy = xyzAngstrom[i][1] - xyzAngstrom[j][1];
      const double dz = xyzAngstrom[i][2] - xyzAngstrom[j][2];
      const double d = std::sqrt(dx * dx + dy * dy + dz * dz);
      const double s = ri + BondRadius(nuclear[j]);
      int entry = 0;
      if (s * CovalentScale >= d) {
        entry = j + 1;
      } else if (hbMode >= 1) {
        const double limit =
            HydrogenWithOorN(nuclear[i], nuclear[j]) ? HydrogenBondLimit : s * CovalentScale * WeakScale;
        if (limit >= d) entry = -(j + 1);
      }
      if (entry == 0) continue;
      const int c = ++table.count[i];
      if (c <= keep) table.slots[i][c - 1] = entry;
    }
  }
}

FloodResult FloodFill(int startAtom, int mode, const NeighbourTable& table, int blockedAtom, int mark,
                      std::vector<int>& marks) {
  FloodResult r;
  if (startAtom < 1 || startAtom > table.Atoms() || startAtom == blockedAtom) return r;
  if (static_cast<int>(marks.size()) < table.Atoms()) marks.resize(table.Atoms(), 0);
  Walk(startAtom, mode != 0, table, blockedAtom, mark, marks, r);
  return r;
}

FragmentList Fragments(const NeighbourTable& table, bool print) {
  FragmentList out;
  const int n = table.Atoms();
  std::vector<int> marks(n, 0);
  for (int start = 1; start <= n; ++start) {
    if (marks[start - 1] != 0) continue;
    const int mark = out.Count() + 1;
    FloodFill(start, 0, table, 0, mark, marks);
    std::vector<int> atoms;
    for (int i = 1; i <= n; ++i)
      if (marks[i - 1] == mark) atoms.push_back(i);
    out.fragments.push_back(std::move(atoms));
  }
  if (print && out.Count() > 1) {
    out.lines.push_back(" Fragments:" + FmtI(out.Count(), 3));
    for (int f = 0; f < out.Count(); ++f) {
      const std::vector<int>& atoms = out.fragments[f];
      std::string line = " Fragment :" + FmtI(f + 1, 3) + "  Num.At:" +
                         FmtI(static_cast<long long>(atoms.size()), 3) + "  Atoms:";
      for (int a : atoms) line += FmtI(a, 3);
      out.lines.push_back(std::move(line));
    }
  }
  return out;
}

Equivalence EquivC(const std::vector<int>& nuclear, const std::vector<Vec3>& a, const std::vector<Vec3>& b) {
  Equivalence out;
  const int n = static_cast<int>(std::min(a.size(), b.size()));
  int total = 0;
  for (int i = 0; i < n; ++i) {
    int partners = 0;
    for (int j = 0; j < n; ++j) {
      if (nuclear[j] != nuclear[i]) continue;
      if (std::fabs(a[i][0] - b[j][0]) <= EquivalenceTolerance &&
          std::fabs(a[i][1] - b[j][1]) <= EquivalenceTolerance &&
          std::fabs(a[i][2] - b[j][2]) <= EquivalenceTolerance)
        ++partners;
    }
    if (partners > 1) out.lines.push_back(" EquivC: ERROR! Some atoms coincide." + FmtI(i + 1, 4) + FmtI(partners, 4));
    total += partners;
  }
  if (total > n) out.lines.push_back(" ERROR in Equiv1!" + FmtI(total, 5));
  out.equivalent = total == n;
  return out;
}

}  // namespace quintor
