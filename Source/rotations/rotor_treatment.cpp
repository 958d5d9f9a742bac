#include "rotations/rotor_treatment.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>

#include "engine/engine.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "numeric/constants.h"
#include "rotations/engine_scan.h"
#include "rotations/generated_coordinates.h"
#include "rotations/mode_assignment.h"
#include "rotations/torsion_curvature.h"

namespace quintor {

namespace rc = constants;

namespace {

// Modes from this slot on are vibrations; the slots before hold the zero modes.
constexpr int kFirstVibration = 7;

const std::string Ruler118(118, '-');
const std::string Asterisks(100, '*');

// The lines of a report written to a stream, into the MainLog.
void CopyLines(MainLog& log, const std::string& text) {
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) log.Line(line);
}

// The formula of a group, carbon and hydrogen first: "CH3", "C6H5".
std::string Formula(const Session& s, const std::vector<int>& atoms) {
  std::map<std::string, int> count;
  for (int a : atoms) {
    std::string e;
    for (char c : s.atomName[a - 1])
      if (std::isalpha(static_cast<unsigned char>(c))) e += c;
    ++count[e];
  }
  std::string f;
  const auto put = [&](const std::string& e) {
    const auto it = count.find(e);
    if (it == count.end()) return;
    f += e + (it->second > 1 ? std::to_string(it->second) : "");
    count.erase(it);
  };
  put("C");
  put("H");
  while (!count.empty()) put(count.begin()->first);
  return f;
}

std::string Coords(const Vec3& p) {
  std::string t;
  for (double v : p) t += FmtF(v * rc::BohrToAngstrom, 10, 6);
  return t;
}

void WriteMoments(Session& s, int number, const Rotor& r) {
  MainLog& log = s.log;
  log.Line(" *** Internal rotation No." + FmtI(number, 3) + " (replacing the vibration mode" + FmtI(r.mode, 4) + ")");
  log.Line(" Masses (amu) and moments of inertia (amu*bohr^2) of rotating groups:");
  log.Line(" Group 1:  M1=" + FmtF(r.groups.group1.mass, 10, 4) + "   I1= " + FmtF(r.groups.group1.moment, 12, 4));
  log.Line(" Group 2:  M2=" + FmtF(r.groups.group2.mass, 10, 4) + "   I2= " + FmtF(r.groups.group2.moment, 12, 4));
  log.Line(" Reduced I=I1*I2/(I1+I2)     = " + FmtF(r.groups.reduced, 12, 4));
  log.Line(" Pitzer's estimator I0       = " + FmtF(r.I0, 12, 4));
  log.Line(" Pitzer's estimator I        = " + FmtF(r.I, 12, 4));
  log.Line(" Rotation axes:");
  const auto point = [&](int k, int atom, const Vec3& p) {
    const std::string head = " Point " + std::to_string(k) + ":  ";
    if (atom > 0)
      log.Line(head + "Atom" + FmtI(atom, 3) + "  Coords:" + Coords(p));
    else
      log.Line(head + "Center of mass of Group" + std::to_string(k) + ". Coords:" + Coords(p));
  };
  point(1, r.axis.atom1, r.axis.p1);
  point(2, r.axis.atom2, r.axis.p2);
}

void WriteKinematics(Session& s, const std::vector<Rotor>& rotors, const KinematicMoments& k) {
  MainLog& log = s.log;
  const int n = static_cast<int>(rotors.size());
  log.Line(" Final order of internal rotations (after assignment of rotational modes)");
  for (int i = 0; i < n; ++i) {
    const Rotor& r = rotors[i];
    std::string line = " Int.Rot." + FmtI(i + 1, 3) + ":   Top: " + FmtA(Formula(s, r.group), 8) + " Axis:" +
                       FmtI(r.axis.atom1, 3) + FmtI(r.axis.atom2, 3) + "    Group:";
    for (int a : r.group) line += FmtI(a, 3);
    log.Line(line);
  }
  log.Line(" *** Analysis of the kinematic matrix for the internal rotations ***");
  log.Line(" Kinematic matrix of internal rotations (amu*bohr**2)");
  std::string head = FmtX(6);
  for (int j = 1; j <= n; ++j) head += FmtI(j, 15);
  log.Line(head);
  for (int i = 0; i < n; ++i) {
    std::string row = FmtI(i + 1, 6);
    for (int j = 0; j < n; ++j) row += FmtF(k.matrix[i][j], 15, 5);
    log.Line(row);
  }
  std::string i0, i;
  for (int r = 0; r < n; ++r) {
    i0 += FmtF(k.I0[r], 15, 5);
    i += FmtF(k.I[r], 15, 5);
  }
  log.Line(" Approximate reduced moments of inertia for the internal rotations (I0), amu*bohr**2");
  log.Line(i0);
  log.Line(" Exact reduced moments of inertia for the internal rotations (I), amu*bohr**2");
  log.Line(i);
}

// A coupled estimator that is not positive cannot be a moment: the rotation
// falls back on its uncoupled value, with the reason in the log.
void GuardEstimator(MainLog& log, int number, Rotor& r) {
  if (r.I > 0.0) return;
  log.Line(Asterisks);
  log.Line(" ATTENTION! Pitzers istimator I has non-physical (negative) value for internal rotation " +
           FmtI(number, 3));
  log.Line(" ATTENTION! This can result in the fatal error or in the incorrect thermodynamic results.");
  log.Line(" ATTENTION! The reason is that the molecule has compound strongly-coupled rotations not supported in the "
           "current version");
  log.Line(" ATTENTION! This defficiency of theory should be corrected in the future versions of Quintor.");
  log.Line(" ATTENTION! Now, to avoid the fatal error the I value will be set to I0 = " + FmtF(r.I0, 15, 5));
  log.Line(" ATTENTION! Thus, the thermodynamic values for this rotation can have significant error.");
  log.Line(Asterisks);
  r.I = r.I0;
}

void WriteTotals(Session& s, int nRot, const std::array<TDResult, RotorColumnCount>& c, const std::optional<TDResult>& mc) {
  MainLog& log = s.log;
  log.Line(" Total values of thermodynamic functions (T=" + FmtF(s.opt.temperature, 8, 2) + " K,  P=" +
           FmtF(s.opt.pressure, 10, 2) + " Pa) ");
  log.Line(" taking into account" + FmtI(nRot, 3) + " internal rotations  (in different approximations)");
  log.Line(Ruler118);
  log.Line(FmtX(13) + " Harmonic   Free Rotator   Pitzer-Gwinn tables    Quantum rotor");
  log.Line(FmtX(13) + "Ocsillator  I(*)    I(**)     I(*)    I(**)     I(*)    I(**)     IRMC");
  log.Line(Ruler118);
  const auto row = [&](const char* label, double TDResult::*field) {
    std::string line = label;
    for (const TDResult& r : c) line += FmtF(r.*field, 9, 3);
    if (mc) line += FmtF((*mc).*field, 9, 3);
    log.Line(line);
  };
  row(" Cv, J/K/mol=", &TDResult::cv);
  row(" Cp, J/K/mol=", &TDResult::cp);
  row(" U,  kJ/mol =", &TDResult::u);
  row(" H,  kJ/mol =", &TDResult::h);
  row(" S,  J/K/mol=", &TDResult::s);
  row(" G,  kJ/mol =", &TDResult::g);
  log.Line();
  log.Line(Ruler118);
  log.Line("I(*)  - reduced moments of inertia are calculated by formula 1/I=1/Ia+1/Ib");
  log.Line("I(**) - reduced moments of inertia are calculated by Pitzer-Gwinn formulas");
  log.Line("Quantum - exact levels of the one-dimensional rotor in the same potential");
  log.Line("IRMC  - Monte Carlo integration with direct estimation of reduced moments");
  log.Line("Note: Internal rotation contributions to U, H, G include U0=H0=ZPE");
  log.Line("in HO, PG and Quantum models (U0=H0=0 in FR model)");
}

void WriteEnergies(Session& s, double zpeTot, const std::array<TDResult, RotorColumnCount>& c, const std::optional<TDResult>& mc) {
  MainLog& log = s.log;
  log.Line(" *** Total energy corrected by TD functions (including internal rotations) ****");
  log.Line(" Minimum electronic-nuclear energy was taken from the input file at step:" + FmtI(s.lowestEnergyStep, 4));
  log.Line(" Minimum Etot: " + FmtF(s.lowestEnergy, 16, 8) + "  (Please check the program decision manually!)");
  log.Line(" Base Energy : " + FmtF(s.electronicEnergy, 16, 8) +
           "  (Energy used as a base for TD calculations. It recommended to check it!)");
  log.Line(FmtX(10) + "Harmonic             Free Rotator               Pitzer-Gwinn tables            Quantum rotor");
  log.Line(FmtX(9) +
           "Ocsillator        I(*)           I(**)          I(*)           I(**)           I(*)           I(**)"
           "          IRMC");
  const double e = s.electronicEnergy;
  const auto row = [&](const char* label, auto add) {
    std::string line = label;
    for (const TDResult& r : c) line += FmtF(e + add(r) * rc::KJPerMolToHartree, 15, 8);
    if (mc) line += FmtF(e + add(*mc) * rc::KJPerMolToHartree, 15, 8);
    log.Line(line);
  };
  row("E    ", [](const TDResult&) { return 0.0; });
  row("E+ZPE", [zpeTot](const TDResult&) { return zpeTot; });
  row("E+U  ", [](const TDResult& r) { return r.u; });
  row("E+H  ", [](const TDResult& r) { return r.h; });
  row("E+G  ", [](const TDResult& r) { return r.g; });
}

// The rotations and the totals of the full evaluation, for the JSON report.
void RecordRotors(Session& s, const std::vector<Rotor>& rotors, const std::vector<RotorResult>& results,
                  const std::array<TDResult, RotorColumnCount>& columns, const std::optional<TDResult>& mc) {
  ThermoReport& report = s.thermo.report;
  report.rotors.clear();
  for (size_t k = 0; k < rotors.size(); ++k) {
    const Rotor& r = rotors[k];
    RotorRecord rec;
    rec.mode = r.mode;
    rec.axis = {r.axis.atom1, r.axis.atom2};
    rec.group = r.group;
    rec.other = r.other;
    rec.fold = rec.symmetryNumber = r.n;
    rec.iStar = r.groups.reduced;
    rec.iStarStar = r.I;
    rec.v0Star = r.V0Star;
    rec.v0StarStar = r.V0StarStar;
    rec.v0Source = r.userBarrier   ? "user"
                   : r.source == -1 ? "specfile"
                   : (r.source == 0 || r.source == 3) ? "frequency"
                                                      : "potential";
    rec.harmonic = r.harmonic;
    for (int j = 0; j < RotorColumnCount; ++j) {
      const RotorFunctions& f = results[k].column[j];
      rec.models[j] = {f.C, f.S, f.H};
    }
    report.rotors.push_back(std::move(rec));
  }
  const double e = s.electronicEnergy;
  const auto put = [&](const char* model, const TDResult& t) {
    report.totalsByModel.push_back({model, t, e + t.g * rc::KJPerMolToHartree});
  };
  report.totalsByModel.clear();
  put("harmonic", columns[HarmonicColumn]);
  put("free_rotor", columns[FreeStarStarColumn]);
  put("pitzer_gwinn", columns[PitzerStarStarColumn]);
  put("quantum", columns[QuantumStarStarColumn]);
  if (mc) put("monte_carlo", *mc);
  report.tableModel = "pitzer_gwinn";
}

}  // namespace

double MomentSI(double amuBohr2) { return amuBohr2 * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius; }

void ChooseBarrier(Rotor& r, double nu, bool autoFold, MainLog& log, int number) {
  r.harmonic = false;
  if (r.source == 0 || r.source == 3) {
    r.V0Star = BarrierFromFrequency(MomentSI(r.groups.reduced), nu, r.n);
    r.V0StarStar = BarrierFromFrequency(MomentSI(r.I), nu, r.n);
    log.Line(" WARNING! Rotation barrier is estimated by vibration frequency of" + FmtX(9) + " : Freq(" +
             FmtI(r.mode, 2) + ")= " + FmtF(nu, 7, 2) + " cm-1");
    if (r.torsionFreq != 0.0) {
      // One barrier, from the curvature along this torsion alone: V0 = 2 k / n^2, k = I0 w^2.
      r.V0Star = r.V0StarStar = BarrierFromFrequency(MomentSI(r.I0), r.torsionFreq, r.n);
      log.Line(" Frequency of this torsion alone (the other torsions held): " + FmtF(r.torsionFreq, 7, 2) +
               " cm-1, with I0");
    }
    const std::string who = " WARNING! Internal rotation" + FmtI(number, 3) + " (mode" + FmtI(r.mode, 4) + ")";
    if (!(nu > 0.0) || r.torsionFreq < 0.0) {
      r.V0Star = r.V0StarStar = 0.0;
      log.Line(who + ": the torsion's frequency is imaginary, V0 = 0: it is taken as a free rotor");
    } else if (std::max(r.V0Star, r.V0StarStar) > MostBarrierFromFrequency) {
      r.harmonic = true;
      log.Line(who + ": V0 =" + FmtF(std::max(r.V0Star, r.V0StarStar), 10, 2) +
               " kJ/mol from the frequency is above " + FmtF(MostBarrierFromFrequency, 4, 0) +
               " kJ/mol, the mode is no clean torsion: it stays a harmonic vibration");
    }
  } else if (r.source == -1) {
    r.V0Star = r.V0StarStar = r.v0Read;
    log.Line(" Rotation barrier is read-in from the specification file");
  } else {
    std::ostringstream text;
    const FourierBarrier f = FourierPotential(r.potential, r.n, autoFold, text);
    CopyLines(log, text.str());
    if (autoFold) r.n = f.n;
    r.V0Star = r.V0StarStar = f.V0;
    r.series.assign(f.potential.begin(), f.potential.end());
  }
}

bool ApplyUserFold(std::vector<Rotor>& rotors, int nRot, MainLog& log) {
  if (nRot <= 0 || rotors.empty()) return false;
  for (Rotor& r : rotors) r.n = nRot;
  log.Line(" WARNING! NRot value is set by user (the same value for all rotatioins)!");
  return true;
}

bool FoldFromPotential(const Options& o) { return o.arir && o.userNRot <= 0; }

bool UseUserBarrier(Rotor& r, const Options& o, int number, int count, MainLog& log) {
  constexpr double kFloor = 1e-6;  // kJ/mol: below it the user has set no barrier
  if (!o.userBarrier || !(o.userV0 > kFloor)) return false;
  r.userBarrier = true;
  r.harmonic = false;
  r.V0Star = r.V0StarStar = o.userV0;
  r.series.clear();
  log.Line(" Rotation barrier is set by user");
  if (count > 1 && number == 1) log.Line(" WARNING! The same V0 value is used for all rotations!");
  return true;
}

namespace {

// 1-fold rotors above this 1/Qf are where the tables' own values are off by up
// to 2.2 J/K/mol in C against the exact levels.
constexpr double kPoorOneFold = 0.7;
// The levels are built for twice the temperature asked, and at least this:
// the tables that follow mostly stay below.
constexpr double kLevelsUpToT = 600.0;

const QuantumLevels& LevelsOf(Rotor& r, int which, double V0, double moment, double T) {
  QuantumLevels& q = r.levels[static_cast<size_t>(which)];
  if (q.E.empty() || q.V0 != V0 || q.moment != moment || q.sigma != std::max(r.n, 1) || q.upToT < T) {
    const CosinePotential V = r.series.empty() ? SingleBarrierPotential(V0, r.n) : r.series;
    q = QuantumRotorLevels(V, moment, r.n, std::max(2.0 * T, kLevelsUpToT));
    q.V0 = V0;
  }
  return q;
}

bool Missed(const PitzerCounters& before, const PitzerCounters& after) {
  return after.missC != before.missC || after.missHoverT != before.missHoverT || after.missS != before.missS;
}

}  // namespace

RotorResult RotorColumns(PitzerTables& tables, Rotor& r, const ThermoState& t, double T, bool* tablesReplaced) {
  RotorResult out;
  const size_t m = static_cast<size_t>(r.mode - 1);
  RotorFunctions& ho = out.column[HarmonicColumn];
  ho.C = t.cvib[m];
  ho.U = ho.H = t.hvib[m];
  ho.S = t.svib[m];
  ho.G = t.gvib[m];
  out.zpe = t.zpe[m];
  const double iStar = MomentSI(r.groups.reduced), iStarStar = MomentSI(r.I);
  out.column[FreeStarColumn] = FreeRotor(iStar, r.n, T);
  out.column[FreeStarStarColumn] = FreeRotor(iStarStar, r.n, T);
  if (r.harmonic) {
    // Every model is the vibration itself; the totals leave it as it is.
    for (RotorFunctions& f : out.column) f = out.column[HarmonicColumn];
    if (tablesReplaced) *tablesReplaced = false;
    return out;
  }
  out.column[QuantumStarColumn] = QuantumRotorAt(LevelsOf(r, 0, r.V0Star, iStar, T), T);
  out.column[QuantumStarStarColumn] = QuantumRotorAt(LevelsOf(r, 1, r.V0StarStar, iStarStar, T), T);
  const PitzerCounters before = tables.counters;
  out.column[PitzerStarColumn] = PitzerGwinnRotor(tables, r.V0Star, iStar, r.n, T);
  // The failures that are reported are those of the I(*) look-ups.
  PitzerCounters counted = tables.counters;
  const bool missStar = Missed(before, counted) || (r.n == 1 && InverseFreeRotorQ(iStar, r.n, T) > kPoorOneFold);
  out.column[PitzerStarStarColumn] = PitzerGwinnRotor(tables, r.V0StarStar, iStarStar, r.n, T);
  const bool missStarStar =
      Missed(counted, tables.counters) || (r.n == 1 && InverseFreeRotorQ(iStarStar, r.n, T) > kPoorOneFold);
  if (missStar) {
    out.column[PitzerStarColumn] = out.column[QuantumStarColumn];
    counted.missC = before.missC, counted.missHoverT = before.missHoverT, counted.missS = before.missS;
  }
  if (missStarStar) out.column[PitzerStarStarColumn] = out.column[QuantumStarStarColumn];
  tables.counters = counted;
  if (tablesReplaced) *tablesReplaced = missStar || missStarStar;
  return out;
}

std::array<TDResult, RotorColumnCount> TotalsWithRotors(const TDResult& rrho, const std::vector<Rotor>& rotors,
                                                        const std::vector<RotorResult>& results,
                                                        const ThermoState& t) {
  std::array<TDResult, RotorColumnCount> c;
  c.fill(rrho);
  for (size_t k = 0; k < rotors.size(); ++k) {
    if (rotors[k].harmonic) continue;
    const size_t m = static_cast<size_t>(rotors[k].mode - 1);
    for (int j = 0; j < RotorColumnCount; ++j) {
      const RotorFunctions& f = results[k].column[j];
      // Hvib holds the mode's ZPE: the harmonic column keeps it as it is, the
      // free rotor loses it, the hindered rotor's tables count from the
      // lowest level and take it back.
      const double z = (j == HarmonicColumn || j == FreeStarColumn || j == FreeStarStarColumn) ? 0.0 : t.zpe[m];
      TDResult& r = c[j];
      r.cv += f.C - t.cvib[m];
      r.cp += f.C - t.cvib[m];
      r.s += f.S - t.svib[m];
      r.u += f.U - t.hvib[m] + z;
      r.h += f.H - t.hvib[m] + z;
      r.g += f.G - t.gvib[m] + z;
    }
  }
  return c;
}

void HinderedRotors::Prepare(Session& s) {
  prepared_ = true;
  tables_ = BuildPitzerTables();
  const int nAtoms = s.nAtoms;
  const std::vector<Vec3> xyz(s.xyz.begin(), s.xyz.begin() + nAtoms);
  const std::vector<double> masses(s.atomMass.begin(), s.atomMass.begin() + nAtoms);

  std::vector<IntRot> given = s.rotors;
  if (s.opt.arir) {
    s.log.Line(" *** Automatic Recognition of Internal Rotations ***");
    std::vector<Vec3> angstrom(xyz);
    for (Vec3& p : angstrom)
      for (double& v : p) v *= rc::BohrToAngstrom;
    const std::vector<int> nuclear(s.atomicNumber.begin(), s.atomicNumber.begin() + nAtoms);
    Recognition found = ARIR(nuclear, masses, angstrom, s.atomName, s.log, s.opt.nrotProduct);
    given.clear();
    if (!found.rotors.empty()) {
      const ModeExpansion e =
          ExpandInRotations(s.modes, masses, angstrom, found.displacement, s.excludeAtoms, kFirstVibration);
      WriteModeExpansion(s.log, e, s.modes, static_cast<int>(found.rotors.size()));
      for (size_t r = 0; r < found.rotors.size(); ++r) {
        if (e.modeOfRotation[r] == 0) {
          s.log.Line(" WARNING! No vibrational mode is assigned to internal rotation" + FmtI(static_cast<long long>(r + 1), 3) +
                     "; it is left out of the evaluation");
          continue;
        }
        found.rotors[r].mode = e.modeOfRotation[r];
        given.push_back(found.rotors[r]);
      }
    }
    s.rotors = given;
  }

  for (size_t k = 0; k < given.size(); ++k) {
    const IntRot& g = given[k];
    const bool atomsOk = std::all_of(g.group.begin(), g.group.end(), [&](int a) { return a >= 1 && a <= nAtoms; }) &&
                         std::all_of(g.axis.begin(), g.axis.end(), [&](int a) { return a >= 0 && a <= nAtoms; });
    if (g.mode < 1 || g.mode > static_cast<int>(s.modes.size()) || g.group.empty() || !atomsOk) {
      s.log.Line(" WARNING! Internal rotation" + FmtI(static_cast<long long>(k + 1), 3) +
                 " names a mode or atoms that the molecule does not have; it is left out of the evaluation");
      continue;
    }
    Rotor r;
    r.mode = g.mode;
    r.n = g.symmetryNumber > 0 ? g.symmetryNumber : 1;
    r.group = g.group;
    r.other = OtherGroup(nAtoms, g.group);
    r.axis = RotationAxisPoints(masses, xyz, r.group, g.axis);
    r.groups = ReducedMomentOfGroups(masses, xyz, r.group, r.other, r.axis.p1, r.axis.p2);
    r.source = g.potentialKind;
    r.v0Read = g.v0;
    for (size_t p = 0; p < g.angles.size() && p < g.energies.size(); ++p)
      r.potential.push_back({g.angles[p], g.energies[p]});
    rotors_.push_back(std::move(r));
  }
  if (rotors_.empty()) return;

  std::vector<std::vector<int>> groups;
  std::vector<AxisPoints> axes;
  for (const Rotor& r : rotors_) {
    groups.push_back(r.group);
    axes.push_back(r.axis);
  }
  if (s.opt.engineScan) {
    // The engine's potential of each rotation stands in for any other barrier.
    const std::vector<int> z(s.atomicNumber.begin(), s.atomicNumber.begin() + nAtoms);
    ScanSettings scan;
    scan.method = engine::MethodOfMenu(s.opt.engineMethod);
    scan.charge = s.opt.charge;
    scan.unrestricted = s.opt.engineUnrestricted;
    scan.multiplicity = s.opt.multiplicity > 0 ? s.opt.multiplicity : engine::DefaultMultiplicity(z, scan.charge);
    scan.workDir = std::filesystem::path(s.files.inputName).parent_path().string();
    const auto scans = ScanByEngine(z, xyz, groups, axes, scan, s.log);
    for (size_t i = 0; i < rotors_.size(); ++i) {
      rotors_[i].potential = scans[i];
      rotors_[i].source = static_cast<int>(scans[i].size());
    }
  }
  ApplyUserFold(rotors_, s.opt.userNRot, s.log);
  const KinematicMoments k = KinematicMatrix(masses, xyz, groups, axes);
  for (size_t i = 0; i < rotors_.size(); ++i) {
    rotors_[i].I0 = k.I0[i];
    rotors_[i].I = k.I[i];
    GuardEstimator(s.log, static_cast<int>(i + 1), rotors_[i]);
  }
  if (s.opt.barrierOfTorsion) {
    const std::vector<double> nu = TorsionFrequencies(s.modes, masses, xyz, groups, axes, kFirstVibration);
    for (size_t i = 0; i < rotors_.size(); ++i) rotors_[i].torsionFreq = nu[i];
  }
  for (size_t i = 0; i < rotors_.size(); ++i) WriteMoments(s, static_cast<int>(i + 1), rotors_[i]);
  WriteKinematics(s, rotors_, k);
}

std::vector<TorsionRotor> TorsionRotors(const std::vector<Rotor>& rotors, bool autoFold) {
  std::vector<TorsionRotor> out;
  for (const Rotor& r : rotors) {
    if (r.harmonic) continue;  // stays a vibration in every column
    TorsionRotor t;
    t.group = r.group;
    t.axisAtom1 = r.axis.atom1;
    t.axisAtom2 = r.axis.atom2;
    t.n = r.n;
    if (r.source > 0 && r.source != 3 && !r.userBarrier) {
      std::ostringstream quiet;
      const CosineSeries series = FourierPotential(r.potential, r.n, autoFold, quiet).potential;
      t.potential.assign(series.begin(), series.end());
    } else {
      t.potential = SingleBarrierSeries(r.V0StarStar, r.n);
    }
    out.push_back(std::move(t));
  }
  return out;
}

TDResult MonteCarloTotals(const TDResult& rrho, const std::vector<Rotor>& rotors, const ThermoState& t,
                          const MonteCarloResult& mc) {
  TDResult c = rrho;
  for (const Rotor& r : rotors) {
    if (r.harmonic) continue;
    const size_t m = static_cast<size_t>(r.mode - 1);
    c.cv -= t.cvib[m];
    c.cp -= t.cvib[m];
    c.s -= t.svib[m];
    c.u -= t.hvib[m];
    c.h -= t.hvib[m];
    c.g -= t.gvib[m];
  }
  c.cv += mc.CV;
  c.cp += mc.CV;
  c.s += mc.S;
  c.u += mc.U;
  c.h += mc.U;
  c.g += mc.F;
  return c;
}

TDResult HinderedRotors::MonteCarlo(Session& s) {
  const MonteCarloSeeds seeds{s.opt.monteCarloSeeds[0], s.opt.monteCarloSeeds[1]};
  const double T = s.opt.temperature;
  const std::vector<Vec3> xyz(s.xyz.begin(), s.xyz.begin() + s.nAtoms);
  const std::vector<double> masses(s.atomMass.begin(), s.atomMass.begin() + s.nAtoms);
  if (!sampled_) {
    sampled_ = true;
    const std::string name = DerivedName(s.files.inputName, ".mco");
    const std::string head1 =
        " *** Calculation of the internal rotation contributions by the classical Monte Carlo method ***";
    const std::string head2 =
        " *** Please take into account that this kind of calculation can take a long time            ***";
    s.log.Line(head1);
    s.log.Line(head2);
    s.log.Line(" *** The results will be printed out to the file " + name + ", unit" + FmtI(MonteCarloUnit, 3) +
               " ***");
    mco_.open(name, std::ios::out | std::ios::trunc);
    mco_ << head1 << "\n" << head2 << "\n";
    torsions_ = TorsionRotors(rotors_, FoldFromPotential(s.opt));
    WriteConfigurationIntegrals(mco_, torsions_, T);
  }
  const MonteCarloResult mc = MonteCarloAtT(torsions_, masses, xyz, T, s.opt.monteCarloSamples, seeds);
  WriteMonteCarloReport(mco_, mc, mc.trials, static_cast<int>(torsions_.size()), seeds);
  mco_.flush();

  const ThermoState& t = s.thermo;
  TDResult alone;
  alone.cv = alone.cp = mc.CV;
  alone.u = alone.h = mc.U;
  alone.s = mc.S;
  alone.g = mc.F;
  alone.q = mc.Z[2];
  alone.lnQ = mc.lnZ;
  TDResult total = MonteCarloTotals(t.tot, rotors_, t, mc);
  const double RT = rc::GasConstant * T / 1000.0;
  // The classical rotations have no zero-point energy: only that of the
  // modes left harmonic is taken off G.
  double zpeLeft = t.zpeTot;
  for (const Rotor& r : rotors_)
    if (!r.harmonic) zpeLeft -= t.zpe[static_cast<size_t>(r.mode - 1)];
  total.lnQ = -((total.g - zpeLeft) - RT) / RT;
  total.q = std::exp(total.lnQ);
  TableResMC& table = s.thermo.monteCarlo;
  if (static_cast<int>(table.rotations.size()) >= MaxMonteCarloRows) {
    s.log.Line(" WARNING! Number of MC results (i.e. temperatures) is greater than Max dimension of TableResMC!");
  } else {
    // No Pitzer-Gwinn table enters these rows: nothing to warn of.
    table.rotations.push_back({T, alone, 0.0});
    table.totals.push_back({T, total, 0.0});
  }
  return MonteCarloTotals(t.tot, rotors_, t, mc);
}

int HinderedRotors::Evaluate(Session& s, bool quiet) {
  if (!prepared_) {
    try {
      Prepare(s);
    } catch (const RotationAxisError& e) {
      s.log.Line(e.what());
      throw RunStop(exit_status::Numeric);
    }
  }
  if (rotors_.empty()) return 0;
  const ThermoState& t = s.thermo;
  const double T = s.opt.temperature;
  tables_.counters = PitzerCounters{};
  results_.clear();
  if (!quiet && s.opt.genCoordAngle >= MinimumScanStep) {
    const std::vector<Vec3> xyz(s.xyz.begin(), s.xyz.begin() + s.nAtoms);
    const std::vector<int> nuclear(s.atomicNumber.begin(), s.atomicNumber.begin() + s.nAtoms);
    const ScanTemplate job = LoadScanTemplate(s.rotationPattern, s.files.inputName);
    for (size_t k = 0; k < rotors_.size(); ++k) {
      const Rotor& r = rotors_[k];
      GenerateScanInputs(s.log, ScanRotor{static_cast<int>(k + 1), r.group, r.axis}, nuclear, s.atomName, xyz,
                         s.opt.genCoordAngle, job, s.files.inputName);
    }
  }
  for (size_t k = 0; k < rotors_.size(); ++k) {
    Rotor& r = rotors_[k];
    if (!quiet) {
      if (!UseUserBarrier(r, s.opt, static_cast<int>(k + 1), Count(), s.log))
        ChooseBarrier(r, s.modes[r.mode - 1].scaledFreq, FoldFromPotential(s.opt), s.log, static_cast<int>(k + 1));
      std::ostringstream text;
      WriteBarrierHeight(text, r.n, r.V0Star, T, MomentSI(r.groups.reduced), MomentSI(r.I));
      CopyLines(s.log, text.str());
    }
    bool replaced = false;
    results_.push_back(RotorColumns(tables_, r, t, T, &replaced));
    if (warnedQuantum_.size() < rotors_.size()) warnedQuantum_.resize(rotors_.size(), false);
    if (replaced && !warnedQuantum_[k]) {
      warnedQuantum_[k] = true;
      s.log.Line(" WARNING! Internal rotation" + FmtI(static_cast<long long>(k + 1), 3) +
                 ": the Pitzer-Gwinn tables do not hold 1/Qf =" + FmtF(InverseFreeRotorQ(MomentSI(r.I), r.n, T), 7, 4) +
                 ", V0/RT =" + FmtF(ReducedBarrier(r.V0StarStar, T), 8, 3) + " (T =" + FmtF(T, 8, 2) +
                 " K); the exact quantum rotor's values stand in for them");
    }
    if (!quiet) {
      std::ostringstream text;
      WriteRotorTable(text, static_cast<int>(k + 1), r.mode, results_.back());
      CopyLines(s.log, text.str());
    }
  }
  errorPercent_ = PitzerErrorPercent(tables_.counters);
  columns_ = TotalsWithRotors(t.tot, rotors_, results_, t);
  monteCarlo_.reset();
  if (s.opt.monteCarlo) monteCarlo_ = MonteCarlo(s);
  if (!quiet) {
    WriteTotals(s, Count(), columns_, monteCarlo_);
    WriteEnergies(s, t.zpeTot, columns_, monteCarlo_);
    RecordRotors(s, rotors_, results_, columns_, monteCarlo_);
  }
  const double RT = rc::GasConstant * T / 1000.0;
  const auto withQ = [&](TDResult r) {
    r.lnQ = -((r.g - t.zpeTot) - RT) / RT;
    r.q = std::exp(r.lnQ);
    return r;
  };
  row_ = withQ(columns_[PitzerStarStarColumn]);
  quantumRow_ = withQ(columns_[QuantumStarStarColumn]);
  return Count();
}

}  // namespace quintor
