#include "rotations/hindered_rotor.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "io/fortran_io.h"
#include "rotations/pitzer_gwinn_tables.h"
#include "numeric/constants.h"

namespace quintor {

namespace rc = constants;

namespace {

// Order 2 in both directions: bilinear between the grid points, which keeps
// every value within the range of its four neighbours.
constexpr int kTableOrder = 2;
// Table 3 holds S above this y; at and below it S comes from table 4.
constexpr double kEntropyTableSwitch = 0.25;

Spline2D TableInterpolant(int table) {
  const PitzerGwinnTable& t = PitzerGwinnTableNo(table);
  const std::vector<double> y(t.y.begin(), t.y.end());
  const std::vector<double> x(PitzerGwinnX.begin(), PitzerGwinnX.end());
  std::vector<std::vector<double>> f;
  for (const PitzerGwinnRow& row : t.rows) f.emplace_back(row.begin(), row.end());
  return InterpolateNotAKnot2D(y, x, f, kTableOrder, kTableOrder);
}

}  // namespace

double InverseFreeRotorQ(double moment, int n, double T) {
  return n * rc::Planck / std::sqrt(8.0 * rc::Pi * rc::Pi * rc::Pi * moment * rc::Boltzmann * T);
}

RotorFunctions FreeRotor(double moment, int n, double T) {
  RotorFunctions f;
  f.C = 0.5 * rc::GasConstant;
  f.U = 0.0005 * rc::GasConstant * T;
  f.H = f.U;
  f.S = rc::GasConstant * (std::log(1.0 / InverseFreeRotorQ(moment, n, T)) + 0.5);
  f.G = f.U - T / 1000.0 * f.S;
  return f;
}

double BarrierFromFrequency(double moment, double nu, int n) {
  if (!(nu > 0.0)) return 0.0;
  const double omega = 100.0 * rc::SpeedOfLight * nu;  // cm-1 -> 1/s, without the 2 pi
  return 8.0 * rc::Pi * rc::Pi * moment * omega * omega * rc::Avogadro / (static_cast<double>(n) * n * 1000.0);
}

double ReducedBarrier(double V0, double T) { return 1000.0 * V0 / (rc::GasConstant * T); }

PitzerTables BuildPitzerTables() {
  PitzerTables t;
  t.heatCapacity = TableInterpolant(1);
  t.enthalpy = TableInterpolant(2);
  t.entropy = TableInterpolant(3);
  t.entropyLoss = TableInterpolant(4);
  return t;
}

PitzerValues PitzerLookUp(PitzerTables& tables, double y, double x, double sFree) {
  PitzerCounters& count = tables.counters;
  PitzerValues v;
  ++count.calls;
  if (tables.heatCapacity.Covers(y, x))
    v.C = tables.heatCapacity(y, x) * rc::KcalToKJ;
  else
    ++count.missC;
  if (tables.enthalpy.Covers(y, x))
    v.HoverT = tables.enthalpy(y, x) * rc::KcalToKJ;
  else
    ++count.missHoverT;
  if (y > kEntropyTableSwitch) {
    if (tables.entropy.Covers(y, x))
      v.S = tables.entropy(y, x) * rc::KcalToKJ;
    else
      ++count.missS;
  } else {
    // Near the classical limit the loss of entropy against the free rotor
    // varies little with y, so it interpolates better than S itself.
    ++count.fromTable4;
    if (tables.entropyLoss.Covers(y, x))
      v.S = sFree - tables.entropyLoss(y, x) * rc::KcalToKJ;
    else
      ++count.missS;
  }
  return v;
}

double PitzerErrorPercent(const PitzerCounters& counters) {
  if (counters.calls <= 0) return 0.0;
  const int worst = std::max({counters.missC, counters.missHoverT, counters.missS});
  return 100.0 * worst / counters.calls;
}

RotorFunctions PitzerGwinnRotor(PitzerTables& tables, double V0, double moment, int n, double T) {
  const double y = InverseFreeRotorQ(moment, n, T);
  const double sFree = FreeRotor(moment, n, T).S;
  const PitzerValues v = PitzerLookUp(tables, y, ReducedBarrier(V0, T), sFree);
  RotorFunctions f;
  f.C = v.C;
  f.U = v.HoverT * T / 1000.0;
  f.H = f.U;
  f.S = v.S;
  f.G = f.U - T / 1000.0 * f.S;
  return f;
}

void WriteBarrierHeight(std::ostream& out, int n, double V0, double T, double momentStar,
                        double momentStarStar) {
  const double x = ReducedBarrier(V0, T);
  out << " Rotation barrier height for n-fold potential V=V0/2*[1-Cos(n*x)] (n=" << FmtI(n, 1) << "):\n";
  out << " V0 = " << FmtF(V0, 10, 4) << "   kJ/mol" << FmtX(6) << FmtF(V0 / rc::KcalToKJ, 10, 4) << " kcal/mol"
      << FmtX(6) << FmtF(x, 10, 4) << " RT   (T=" << FmtF(T, 8, 2) << "K)\n";
  out << (x <= 1.4 ? " => Free rotation (V0<1.4RT)\n" : " => Hindered rotation (V0>1.4RT)\n");
  const double yStar = InverseFreeRotorQ(momentStar, n, T);
  const double yStarStar = InverseFreeRotorQ(momentStarStar, n, T);
  out << " Free-rotation function: 1/Qf =  " << FmtE(yStar, 15, 6) << "   Qf =  " << FmtE(1.0 / yStar, 15, 6)
      << "\n";
  out << " Free-rotation (Pitzer): 1/Qf =  " << FmtE(yStarStar, 15, 6) << "   Qf =  "
      << FmtE(1.0 / yStarStar, 15, 6) << "\n";
}

void WriteRotorTable(std::ostream& out, int rotation, int mode, const RotorResult& result) {
  const auto row = [&](const char* label, auto value) {
    out << label;
    for (const RotorFunctions& f : result.column) out << FmtF(value(f), 9, 3);
    out << "\n";
  };
  out << " Thermodynamic functions for internal rotation" << FmtI(rotation, 3) << " (vibration mode"
      << FmtI(mode, 3) << ")\n";
  out << FmtX(17) << " Harmonic   Free Rotator   Pitzer-Gwinn tables    Quantum rotor\n";
  out << FmtX(17) << "Ocsillator  I(*)    I(**)     I(*)    I(**)     I(*)    I(**)\n";
  row(" C,    J/K/mol=", [](const RotorFunctions& f) { return f.C; });
  row(" U,    kJ/mol =", [](const RotorFunctions& f) { return f.U; });
  row(" H,    kJ/mol =", [](const RotorFunctions& f) { return f.H; });
  row(" S,    J/K/mol=", [](const RotorFunctions& f) { return f.S; });
  row(" G,    kJ/mol =", [](const RotorFunctions& f) { return f.G; });
  // The zero-point energy goes on every column, the harmonic one included,
  // where Hvib and Gvib already hold it: the table has always shown it so.
  const double zpe = result.zpe;
  row(" U+ZPE,kJ/mol =", [zpe](const RotorFunctions& f) { return f.U + zpe; });
  row(" H+ZPE,kJ/mol =", [zpe](const RotorFunctions& f) { return f.H + zpe; });
  row(" G+ZPE,kJ/mol =", [zpe](const RotorFunctions& f) { return f.G + zpe; });
  out << " I(*)  - reduced moments of inertia are calculated by formula 1/I=1/Ia+1/Ib\n";
  out << " I(**) - reduced moments of inertia are calculated by Pitzer-Gwinn formulas\n";
  out << " Quantum - exact levels of the one-dimensional rotor in the same potential\n";
  out << " Note: I(*)=I(**) for symmetric rotors.\n";
}

}  // namespace quintor
