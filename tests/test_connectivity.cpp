#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/bond_radii.h"
#include "analysis/connectivity.h"

namespace quintor {
namespace {

std::vector<int> Stored(const NeighbourTable& t, int atom) {
  std::vector<int> out;
  for (int e : t.slots[atom - 1])
    if (e != 0) out.push_back(e);
  return out;
}

// Water with its C2 axis along z, O at the origin.
const std::vector<int> kWaterZ = {8, 1, 1};
const std::vector<Vec3> kWater = {{0, 0, 0}, {0, 0.7572, -0.5865}, {0, -0.7572, -0.5865}};

TEST(BondRadius, Table) {
  EXPECT_EQ(BondRadius(1), 0.3707);
  EXPECT_EQ(BondRadius(8), 0.700065);
  EXPECT_EQ(BondRadius(7), 0.547);
  EXPECT_EQ(BondRadius(35), 1.1415);
  EXPECT_EQ(BondRadius(68), 1.86);
  EXPECT_EQ(BondRadius(67), 1.0);
  EXPECT_EQ(BondRadius(83), 1.548);
  EXPECT_EQ(BondRadius(92), 1.49);
  EXPECT_EQ(BondRadius(98), 0.1);
  EXPECT_EQ(BondRadius(100), 1.0);
  EXPECT_EQ(BondRadius(101), 0.0);
}

TEST(Connect, WaterHasTwoBondsAndNoHH) {
  NeighbourTable t;
  Connect(0, kWaterZ, kWater, NeighbourSlots, t);
  EXPECT_EQ(t.count, (std::vector<int>{2, 1, 1}));
  EXPECT_EQ(Stored(t, 1), (std::vector<int>{2, 3}));
  EXPECT_EQ(Stored(t, 2), (std::vector<int>{1}));
  EXPECT_EQ(Stored(t, 3), (std::vector<int>{1}));
}

TEST(Connect, CovalentLimitIsInclusive) {
  // C-C: 1.15 * (0.771 + 0.771) = 1.7733 A.
  const std::vector<int> z = {6, 6};
  NeighbourTable t;
  Connect(0, z, {{0, 0, 0}, {1.7733 - 1e-9, 0, 0}}, 16, t);
  EXPECT_EQ(t.count[0], 1);
  Connect(0, z, {{0, 0, 0}, {1.7734, 0, 0}}, 16, t);
  EXPECT_EQ(t.count[0], 0);
  // With weak bonds the same pair is weak up to 1.2 times further.
  Connect(1, z, {{0, 0, 0}, {2.12, 0, 0}}, 16, t);
  EXPECT_EQ(Stored(t, 1), std::vector<int>{-2});
  Connect(1, z, {{0, 0, 0}, {2.13, 0, 0}}, 16, t);
  EXPECT_EQ(t.count[0], 0);
}

TEST(Connect, HydrogenBondsToOxygenAndNitrogenUseTwoAndAHalfAngstrom) {
  // H...O at 2.4 A: weak with hbMode 1 only, from both sides.
  const std::vector<int> z = {8, 1, 8};
  const std::vector<Vec3> near = {{0, 0, 0}, {0.96, 0, 0}, {0.96 + 2.4, 0, 0}};
  NeighbourTable t;
  Connect(0, z, near, 16, t);
  EXPECT_EQ(Stored(t, 2), std::vector<int>{1});
  EXPECT_EQ(t.count[2], 0);
  Connect(1, z, near, 16, t);
  EXPECT_EQ(Stored(t, 2), (std::vector<int>{1, -3}));
  EXPECT_EQ(Stored(t, 3), std::vector<int>{-2});
  // At 2.6 A no bond in either mode.
  const std::vector<Vec3> far = {{0, 0, 0}, {0.96, 0, 0}, {0.96 + 2.6, 0, 0}};
  Connect(1, z, far, 16, t);
  EXPECT_EQ(Stored(t, 2), std::vector<int>{1});
  EXPECT_EQ(t.count[2], 0);
  // N-H the same way round and the other.
  Connect(1, {1, 7}, {{0, 0, 0}, {2.45, 0, 0}}, 16, t);
  EXPECT_EQ(Stored(t, 1), std::vector<int>{-2});
  EXPECT_EQ(Stored(t, 2), std::vector<int>{-1});
  // H with another element keeps the scaled limit: H...Cl weak up to 1.883 A.
  Connect(1, {1, 17}, {{0, 0, 0}, {1.85, 0, 0}}, 16, t);
  EXPECT_EQ(Stored(t, 1), std::vector<int>{-2});
  Connect(1, {1, 17}, {{0, 0, 0}, {2.4, 0, 0}}, 16, t);
  EXPECT_EQ(t.count[0], 0);
}

TEST(Connect, MoreThanSixteenPartnersAreCountedNotStored) {
  std::vector<int> z = {6};
  std::vector<Vec3> xyz = {{0, 0, 0}};
  for (int k = 0; k < 18; ++k) {
    const double t = 2.0 * constants::Pi * k / 18.0;
    z.push_back(1);
    xyz.push_back({std::cos(t), std::sin(t), 0.0});
  }
  NeighbourTable t;
  Connect(0, z, xyz, NeighbourSlots, t);
  EXPECT_EQ(t.count[0], 18);
  std::vector<int> expected;
  for (int j = 2; j <= 17; ++j) expected.push_back(j);
  EXPECT_EQ(Stored(t, 1), expected);
  // A smaller limit stores fewer.
  Connect(0, z, xyz, 4, t);
  EXPECT_EQ(t.count[0], 18);
  EXPECT_EQ(Stored(t, 1), (std::vector<int>{2, 3, 4, 5}));
}

TEST(Connect, ReusesTheTableWhenRebuilt) {
  NeighbourTable t;
  Connect(0, kWaterZ, kWater, 16, t);
  const auto* storage = t.slots.data();
  std::vector<Vec3> apart = kWater;
  apart[2] = {0, -5, 0};
  Connect(0, kWaterZ, apart, 16, t);
  EXPECT_EQ(t.slots.data(), storage);
  EXPECT_EQ(t.count, (std::vector<int>{1, 1, 0}));
  EXPECT_EQ(Stored(t, 1), std::vector<int>{2});
}

// n-butane's carbon chain, 1-2-3-4.
std::vector<Vec3> Chain(int n) {
  std::vector<Vec3> xyz;
  for (int i = 0; i < n; ++i) xyz.push_back({1.5 * i, (i % 2) * 0.3, 0.0});
  return xyz;
}

TEST(FloodFill, CuttingABond) {
  NeighbourTable t;
  Connect(0, {6, 6, 6, 6}, Chain(4), 16, t);
  std::vector<int> marks(4, 0);
  const FloodResult left = FloodFill(2, 0, t, 3, 1, marks);
  EXPECT_EQ(left.count, 2);
  EXPECT_EQ(left.blockedContacts, 1);
  EXPECT_EQ(marks, (std::vector<int>{1, 1, 0, 0}));
  const FloodResult right = FloodFill(3, 0, t, 2, 2, marks);
  EXPECT_EQ(right.count, 2);
  EXPECT_EQ(marks, (std::vector<int>{1, 1, 2, 2}));
  // Without a block the whole chain.
  std::vector<int> all(4, 0);
  EXPECT_EQ(FloodFill(1, 0, t, 0, 7, all).count, 4);
  EXPECT_EQ(all, (std::vector<int>{7, 7, 7, 7}));
}

TEST(FloodFill, RingBondIsReachedAroundTheOtherWay) {
  // A square of carbons: cutting 1-2 still meets 2 from atom 3's side.
  const std::vector<Vec3> square = {{0, 0, 0}, {1.5, 0, 0}, {1.5, 1.5, 0}, {0, 1.5, 0}};
  NeighbourTable t;
  Connect(0, {6, 6, 6, 6}, square, 16, t);
  std::vector<int> marks(4, 0);
  const FloodResult r = FloodFill(1, 0, t, 2, 1, marks);
  EXPECT_EQ(r.count, 3);
  EXPECT_EQ(r.blockedContacts, 2);
  EXPECT_EQ(marks[1], 0);
}

TEST(FloodFill, WeakBondsOnlyInTheirModes) {
  const std::vector<int> z = {8, 1, 8};
  NeighbourTable t;
  Connect(1, z, {{0, 0, 0}, {0.96, 0, 0}, {0.96 + 2.0, 0, 0}}, 16, t);
  std::vector<int> marks(3, 0);
  EXPECT_EQ(FloodFill(1, 0, t, 0, 1, marks).count, 2);
  std::vector<int> weak(3, 0);
  EXPECT_EQ(FloodFill(1, 1, t, 0, 1, weak).count, 3);
  std::vector<int> any(3, 0);
  EXPECT_EQ(FloodFill(1, 5, t, 0, 1, any).count, 3);
}

TEST(Fragments, WaterDimerIsTwoFragmentsWithoutWeakBonds) {
  std::vector<int> z = kWaterZ;
  std::vector<Vec3> xyz = kWater;
  for (const Vec3& p : kWater) xyz.push_back({p[0] + 3.0, p[1], p[2]});
  z.insert(z.end(), kWaterZ.begin(), kWaterZ.end());
  NeighbourTable t;
  Connect(0, z, xyz, 16, t);
  const FragmentList f = Fragments(t, true);
  ASSERT_EQ(f.Count(), 2);
  EXPECT_EQ(f.fragments[0], (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(f.fragments[1], (std::vector<int>{4, 5, 6}));
  EXPECT_EQ(f.lines, (std::vector<std::string>{
                         " Fragments:  2",
                         " Fragment :  1  Num.At:  3  Atoms:  1  2  3",
                         " Fragment :  2  Num.At:  3  Atoms:  4  5  6",
                     }));
  EXPECT_TRUE(Fragments(t, false).lines.empty());
}

TEST(Fragments, OneMoleculeIsNotListed) {
  NeighbourTable t;
  Connect(0, kWaterZ, kWater, 16, t);
  const FragmentList f = Fragments(t, true);
  EXPECT_EQ(f.Count(), 1);
  EXPECT_TRUE(f.lines.empty());
}

TEST(Fragments, InterleavedNumbering) {
  // Atoms 1 and 3 bound, 2 alone far away.
  NeighbourTable t;
  Connect(0, {6, 6, 6}, {{0, 0, 0}, {10, 0, 0}, {1.5, 0, 0}}, 16, t);
  const FragmentList f = Fragments(t, false);
  ASSERT_EQ(f.Count(), 2);
  EXPECT_EQ(f.fragments[0], (std::vector<int>{1, 3}));
  EXPECT_EQ(f.fragments[1], std::vector<int>{2});
}

std::vector<Vec3> TurnedAboutZ(const std::vector<Vec3>& xyz, double angle) {
  std::vector<Vec3> out;
  for (const Vec3& p : xyz)
    out.push_back({p[0] * std::cos(angle) - p[1] * std::sin(angle), p[0] * std::sin(angle) + p[1] * std::cos(angle), p[2]});
  return out;
}

TEST(EquivC, SameArrangement) {
  EXPECT_TRUE(EquivC(kWaterZ, kWater, kWater).equivalent);
  // The C2 of water swaps the two H atoms: still the same arrangement.
  const Equivalence swapped = EquivC(kWaterZ, kWater, TurnedAboutZ(kWater, constants::Pi));
  EXPECT_TRUE(swapped.equivalent);
  EXPECT_TRUE(swapped.lines.empty());
  // A quarter turn is not a symmetry.
  EXPECT_FALSE(EquivC(kWaterZ, kWater, TurnedAboutZ(kWater, constants::Pi / 2)).equivalent);
  // Small noise is within 0.1 A.
  std::vector<Vec3> noisy = kWater;
  noisy[1][0] += 0.09;
  EXPECT_TRUE(EquivC(kWaterZ, kWater, noisy).equivalent);
  noisy[1][0] += 0.02;
  EXPECT_FALSE(EquivC(kWaterZ, kWater, noisy).equivalent);
}

TEST(EquivC, SwappingUnlikeAtomsIsNotEquivalent) {
  const std::vector<int> z = {9, 17};
  const std::vector<Vec3> fcl = {{0.8, 0, 0}, {-0.8, 0, 0}};
  EXPECT_FALSE(EquivC(z, fcl, TurnedAboutZ(fcl, constants::Pi)).equivalent);
}

TEST(EquivC, CoincidingAtomsAreReportedAndTakenAtFaceValue) {
  // Two H of set B on one spot, the other H place empty: the count adds up
  // to the number of atoms, so the sets pass as equivalent.
  std::vector<Vec3> b = kWater;
  b[2] = b[1];
  const Equivalence e = EquivC(kWaterZ, kWater, b);
  EXPECT_EQ(e.lines, std::vector<std::string>{" EquivC: ERROR! Some atoms coincide.   2   2"});
  EXPECT_TRUE(e.equivalent);
  // Coinciding atoms on both sides: each H finds two partners, an impossible total.
  const Equivalence twice = EquivC(kWaterZ, b, b);
  EXPECT_EQ(twice.lines, (std::vector<std::string>{" EquivC: ERROR! Some atoms coincide.   2   2",
                                                    " EquivC: ERROR! Some atoms coincide.   3   2",
                                                    " ERROR in Equiv1!    5"}));
  EXPECT_EQ(twice.lines.back(), " ERROR in Equiv1!    5");
  EXPECT_FALSE(twice.equivalent);
}

}  // namespace
}  // namespace quintor
