// Bonds by the scaled covalent radii, weak and hydrogen bonds, the flood
// fill that cuts a bond, fragments, and the equivalence of two arrangements.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/connectivity.h"

namespace quintor {
namespace {

std::vector<int> Stored(const NeighbourTable& t, int atom) {
  std::vector<int> out;
  for (int e : t.slots.at(atom - 1))
    if (e != 0) out.push_back(e);
  return out;
}

// Water with its C2 axis along z, O at the origin.
const std::vector<int> kWaterZ = {8, 1, 1};
const std::vector<Vec3> kWater = {{0, 0, 0}, {0, 0.7572, -0.5865}, {0, -0.7572, -0.5865}};

std::vector<Vec3> TurnedAboutZ(const std::vector<Vec3>& xyz, double angle) {
  std::vector<Vec3> out;
  for (const Vec3& p : xyz)
    out.push_back({p[0] * std::cos(angle) - p[1] * std::sin(angle), p[0] * std::sin(angle) + p[1] * std::cos(angle), p[2]});
  return out;
}

}  // namespace

TEST(Connect, WaterAndARebuiltTable) {
  NeighbourTable t;
  Connect(0, kWaterZ, kWater, NeighbourSlots, t);
  EXPECT_EQ(t.count, (std::vector<int>{2, 1, 1}));
  EXPECT_EQ(Stored(t, 1), (std::vector<int>{2, 3}));
  EXPECT_EQ(Stored(t, 3), (std::vector<int>{1}));
  // Built again with one H far away: nothing of the first build is left.
  std::vector<Vec3> apart = kWater;
  apart[2] = {0, -5, 0};
  Connect(0, kWaterZ, apart, 16, t);
  EXPECT_EQ(t.count, (std::vector<int>{1, 1, 0}));
  EXPECT_EQ(Stored(t, 1), std::vector<int>{2});
}

TEST(Connect, LimitsOfCovalentWeakAndHydrogenBonds) {
  struct Case {
    int mode;
    std::vector<int> z;
    double distance;
    std::vector<int> first, second;  // what atoms 1 and 2 store
  };
  // C-C: 1.15 * (0.771 + 0.771) = 1.7733 A, inclusive; weak up to 1.2 times
  // further. H...O and H...N weak up to 2.5 A in mode 1; H...Cl by the radii.
  const std::vector<Case> cases = {
      {0, {6, 6}, 1.7733 - 1e-9, {2}, {1}}, {0, {6, 6}, 1.7734, {}, {}},
      {1, {6, 6}, 2.12, {-2}, {-1}},        {1, {6, 6}, 2.13, {}, {}},
      {0, {1, 8}, 2.4, {}, {}},             {1, {1, 8}, 2.4, {-2}, {-1}},
      {1, {1, 8}, 2.6, {}, {}},             {1, {1, 7}, 2.45, {-2}, {-1}},
      {1, {1, 17}, 1.85, {-2}, {-1}},       {1, {1, 17}, 2.4, {}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.z[0]) + "-" + std::to_string(c.z[1]) + " at " + std::to_string(c.distance) +
                 " mode " + std::to_string(c.mode));
    NeighbourTable t;
    Connect(c.mode, c.z, {{0, 0, 0}, {c.distance, 0, 0}}, 16, t);
    EXPECT_EQ(Stored(t, 1), c.first);
    EXPECT_EQ(Stored(t, 2), c.second);
  }
}

TEST(Connect, MorePartnersThanSlotsAreCountedNotStored) {
  std::vector<int> z = {6};
  std::vector<Vec3> xyz = {{0, 0, 0}};
  for (int k = 0; k < 18; ++k) {
    z.push_back(1);
    xyz.push_back({std::cos(k * constants::Pi / 9), std::sin(k * constants::Pi / 9), 0.0});
  }
  NeighbourTable t;
  Connect(0, z, xyz, 4, t);
  EXPECT_EQ(t.count[0], 18);
  EXPECT_EQ(Stored(t, 1), (std::vector<int>{2, 3, 4, 5}));
}

TEST(FloodFill, CuttingABondInAChainAndInARing) {
  NeighbourTable t;
  Connect(0, {6, 6, 6, 6}, {{0, 0, 0}, {1.5, 0.3, 0}, {3.0, 0, 0}, {4.5, 0.3, 0}}, 16, t);
  std::vector<int> marks(4, 0);
  const FloodResult left = FloodFill(2, 0, t, 3, 1, marks);
  EXPECT_EQ(left.count, 2);
  EXPECT_EQ(left.blockedContacts, 1);
  FloodFill(3, 0, t, 2, 2, marks);
  EXPECT_EQ(marks, (std::vector<int>{1, 1, 2, 2}));
  // A square: cutting 1-2 still meets 2 from atom 3's side.
  Connect(0, {6, 6, 6, 6}, {{0, 0, 0}, {1.5, 0, 0}, {1.5, 1.5, 0}, {0, 1.5, 0}}, 16, t);
  std::vector<int> ring(4, 0);
  const FloodResult r = FloodFill(1, 0, t, 2, 1, ring);
  EXPECT_EQ(r.count, 3);
  EXPECT_EQ(r.blockedContacts, 2);
  EXPECT_EQ(ring[1], 0);
  // Weak bonds are followed in their modes only.
  Connect(1, {8, 1, 8}, {{0, 0, 0}, {0.96, 0, 0}, {2.96, 0, 0}}, 16, t);
  for (auto [mode, count] : {std::pair{0, 2}, std::pair{1, 3}, std::pair{5, 3}}) {
    std::vector<int> m(3, 0);
    EXPECT_EQ(FloodFill(1, mode, t, 0, 1, m).count, count) << mode;
  }
}

TEST(Fragments, ListedOnlyWhenThereAreSeveral) {
  std::vector<int> z = kWaterZ;
  std::vector<Vec3> xyz = kWater;
  for (const Vec3& p : kWater) xyz.push_back({p[0] + 3.0, p[1], p[2]});
  z.insert(z.end(), kWaterZ.begin(), kWaterZ.end());
  NeighbourTable t;
  Connect(0, z, xyz, 16, t);
  const FragmentList f = Fragments(t, true);
  ASSERT_EQ(f.Count(), 2);
  EXPECT_EQ(f.lines, (std::vector<std::string>{
                         " Fragments:  2",
                         " Fragment :  1  Num.At:  3  Atoms:  1  2  3",
                         " Fragment :  2  Num.At:  3  Atoms:  4  5  6",
                     }));
  EXPECT_TRUE(Fragments(t, false).lines.empty());
  Connect(0, kWaterZ, kWater, 16, t);
  EXPECT_TRUE(Fragments(t, true).lines.empty());
  // Interleaved numbering: atoms 1 and 3 bound, 2 alone.
  Connect(0, {6, 6, 6}, {{0, 0, 0}, {10, 0, 0}, {1.5, 0, 0}}, 16, t);
  const FragmentList g = Fragments(t, false);
  ASSERT_EQ(g.Count(), 2);
  EXPECT_EQ(g.fragments[0], (std::vector<int>{1, 3}));
}

TEST(EquivC, SameArrangement) {
  // The C2 of water swaps the two H atoms: still the same arrangement.
  const Equivalence swapped = EquivC(kWaterZ, kWater, TurnedAboutZ(kWater, constants::Pi));
  EXPECT_TRUE(swapped.equivalent);
  EXPECT_TRUE(swapped.lines.empty());
  EXPECT_FALSE(EquivC(kWaterZ, kWater, TurnedAboutZ(kWater, constants::Pi / 2)).equivalent);
  std::vector<Vec3> noisy = kWater;
  noisy[1][0] += 0.09;  // within 0.1 A
  EXPECT_TRUE(EquivC(kWaterZ, kWater, noisy).equivalent);
  noisy[1][0] += 0.02;
  EXPECT_FALSE(EquivC(kWaterZ, kWater, noisy).equivalent);
  // Unlike atoms may not swap.
  const std::vector<Vec3> fcl = {{0.8, 0, 0}, {-0.8, 0, 0}};
  EXPECT_FALSE(EquivC({9, 17}, fcl, TurnedAboutZ(fcl, constants::Pi)).equivalent);
}

TEST(EquivC, CoincidingAtomsAreReportedAndTakenAtFaceValue) {
  // Two H of set B on one spot: the count adds up, so the sets pass.
  std::vector<Vec3> b = kWater;
  b[2] = b[1];
  const Equivalence e = EquivC(kWaterZ, kWater, b);
  EXPECT_EQ(e.lines, std::vector<std::string>{" EquivC: ERROR! Some atoms coincide.   2   2"});
  EXPECT_TRUE(e.equivalent);
  // On both sides each H finds two partners, an impossible total.
  const Equivalence twice = EquivC(kWaterZ, b, b);
  EXPECT_EQ(twice.lines, (std::vector<std::string>{" EquivC: ERROR! Some atoms coincide.   2   2",
                                                    " EquivC: ERROR! Some atoms coincide.   3   2",
                                                    " ERROR in Equiv1!    5"}));
  EXPECT_FALSE(twice.equivalent);
}

}  // namespace quintor
