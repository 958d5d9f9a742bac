// The d-orbital terms of MNDO/d: the multipole coefficients of orbital
// products, the one-centre integrals over s, p and d, the Slater-Condon
// radial integrals, and the charge separations and additive terms.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "engine/engine.h"
#include "engine/integrals.h"
#include "engine/parameters.h"
#include "engine/slater_condon.h"

using namespace quintor::engine;

namespace {
// Local orbital order: s, x, y, z, z2, xz, yz, x2-y2, xy.
enum { S, X, Y, Z, Z2, XZ, YZ, X2Y2, XY };
const double r3 = std::sqrt(3.0);
}  // namespace

// The coefficients of the MNDO/d paper's Table 2 follow from the angular
// integrals and the moments of the point-charge multipoles.
TEST(engineDOrbitals, MultipoleCoefficientsOfThePaper) {
  struct Case {
    int i, j, l, m;
    double expected;
  };
  const Case cases[] = {
      {S, S, 0, 0, 1},          {Z, S, 1, 0, 1},          {X, S, 1, 1, 1},          {Z2, S, 2, 0, 2 / r3},
      {XZ, S, 2, 1, 1},         {X2Y2, S, 2, 2, 1},       {Z, Z, 0, 0, 1},          {Z, Z, 2, 0, 4.0 / 3},
      {X, X, 2, 0, -2.0 / 3},   {X, X, 2, 2, 1},          {Y, Y, 2, 2, -1},         {X, Z, 2, 1, 1},
      {Y, X, 2, -2, 1},         {Z2, Z, 1, 0, 2 / r3},    {Z2, X, 1, 1, -1 / r3},   {XZ, Z, 1, 1, 1},
      {XZ, X, 1, 0, 1},         {X2Y2, Y, 1, -1, -1},     {Z2, Z2, 2, 0, 4.0 / 3},  {XZ, XZ, 2, 0, 2.0 / 3},
      {XZ, XZ, 2, 2, 1},        {X2Y2, X2Y2, 2, 0, -4.0 / 3}, {Z2, XZ, 2, 1, 1 / r3}, {Z2, X2Y2, 2, 2, -2 / r3},
      {YZ, XZ, 2, -2, 1},       {XY, XY, 0, 0, 1},        {Z2, S, 0, 0, 0},         {Z, X, 1, 1, 0},
  };
  for (const Case& c : cases)
    EXPECT_NEAR(MultipoleCoefficient(c.i, c.j, c.l, c.m), c.expected, 1e-10)
        << c.i << ' ' << c.j << ' ' << c.l << ' ' << c.m;
}

// Over s and p alone the spd integrals are the method's GSS ... HPP.
TEST(engineDOrbitals, SpdIntegralsHoldTheSpSet) {
  const ParameterSet set = BuiltinParameters(EngineMethod::MNDOD);
  for (int z : {13, 14, 15, 16, 17, 35, 53}) {
    const ElementParameters& p = set.el[z];
    ASSERT_EQ(OrbitalCount(p, true), 9) << z;
    const std::vector<double> spd = OneCentreIntegralsSpd(p), sp = OneCentreIntegrals(p, 4);
    for (int a = 0; a < 4; ++a)
      for (int b = 0; b < 4; ++b)
        for (int c = 0; c < 4; ++c)
          for (int d = 0; d < 4; ++d)
            EXPECT_NEAR(spd[((a * 9 + b) * 9 + c) * 9 + d], sp[((a * 4 + b) * 4 + c) * 4 + d], 1e-9) << z;
    // (ss|dd) is F0SD and (dd|dd) of one orbital F0DD + 4/49 (F2DD + F4DD).
    EXPECT_NEAR(spd[((S * 9 + S) * 9 + Z2) * 9 + Z2], p.f0sd, 1e-9);
    EXPECT_NEAR(spd[((Z2 * 9 + Z2) * 9 + Z2) * 9 + Z2], p.f0dd + 4.0 / 49 * (p.f2dd + p.f4dd), 1e-9);
    // The same for each of the five d orbitals.
    for (int d = Z2; d <= XY; ++d) EXPECT_NEAR(spd[((d * 9 + d) * 9 + d) * 9 + d], spd[((Z2 * 9 + Z2) * 9 + Z2) * 9 + Z2], 1e-9);
  }
}

TEST(engineDOrbitals, RadialIntegralsOfSlaterFunctions) {
  // F0 of a 1s density with itself is 5/8 zeta hartree.
  EXPECT_NEAR(RadialSlaterCondon(0, 1, 1.3, 1, 1.3, 1, 1.3, 1, 1.3, 27.21), 5.0 / 8 * 1.3 * 27.21, 1e-9);
  // Symmetric in the two electrons.
  EXPECT_NEAR(RadialSlaterCondon(2, 3, 1.8, 3, 1.2, 3, 1.1, 3, 1.1, 27.21),
              RadialSlaterCondon(2, 3, 1.1, 3, 1.1, 3, 1.8, 3, 1.2, 27.21), 1e-10);
}

TEST(engineDOrbitals, ChlorineTermsAndCoreAdditiveTerm) {
  const ParameterSet set = BuiltinParameters(EngineMethod::MNDOD);
  const ElementParameters& cl = set.el[17];
  // sp multipoles as in MNDO; d ones positive and of atomic size.
  EXPECT_DOUBLE_EQ(cl.add[1], cl.dd);
  EXPECT_NEAR(cl.add[2], cl.qq * std::sqrt(2.0), 1e-12);
  for (int k = 3; k <= 5; ++k) {
    EXPECT_GT(cl.add[k], 0.3) << k;
    EXPECT_LT(cl.add[k], 3.0) << k;
  }
  for (int k = 0; k < 9; ++k) EXPECT_GT(cl.bdd[k], 0.1) << k;
  // The core's additive term: 27.21 / (2 GSS) bohr, MOPAC's 1.0298121.
  EXPECT_NEAR(cl.bdd[8], 1.0298121, 1e-6);
  EXPECT_NEAR(CoreAdditiveTerm(11, set.el[11], EngineMethod::MNDOD), 1.5305533, 1e-12);
  EXPECT_DOUBLE_EQ(CoreAdditiveTerm(17, cl, EngineMethod::MNDO), 0.5 / cl.am);
  // The report carries the 17 Slater-Condon parameters.
  EXPECT_DOUBLE_EQ(cl.slaterCondon[0], cl.gss);
  EXPECT_DOUBLE_EQ(cl.slaterCondon[10], cl.f0dd);
}

// The pair exponents of the core-core term that MNDO/d fitted for the bonds
// of Na, Mg and Al, seen through MOPAC 22's own MNDOD heats (1SCF, same
// geometries): NaH, MgS and a bridged Al2H2.
TEST(engineDOrbitals, PairExponentsOfSodiumMagnesiumAndAluminiumAgainstMopac) {
  struct Case {
    const char* name;
    std::vector<int> z;
    std::vector<std::array<double, 3>> x;
    double mopacKcal;
  };
  const Case cases[] = {
      {"NaH", {11, 1}, {{0, 0, 0}, {0, 0, 1.90}}, 34.55900},
      {"MgS", {12, 16}, {{0, 0, 0}, {0, 0, 2.15}}, 49.36947},
      {"Al2H2", {13, 13, 1, 1}, {{0, 0, 0}, {0, 0, 2.60}, {0, 1.6, -0.2}, {0, -1.6, 2.8}}, 105.25621},
  };
  EngineOptions builtin;
  builtin.parameterFile = "";
  builtin.printLevel = 0;
  for (const Case& c : cases) {
    const EngineResult r = EngineRun(EngineMethod::MNDOD, c.z, c.x, 0, 1, false, nullptr, builtin);
    EXPECT_NEAR(r.heatKcal, c.mopacKcal, 0.05) << c.name;
  }
}
