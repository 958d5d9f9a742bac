// The rigid-rotor harmonic-oscillator evaluation at one temperature and
// pressure: the electronic, translational, rotational and vibrational
// contributions, their totals and the total energy corrected by them.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <string_view>

#include "io/fortran_io.h"
#include "numeric/jacobi.h"
#include "thermo/force_constants.h"
#include "thermo/thermo.h"

namespace quintor {

namespace {

using namespace constants;

// Base of the natural logarithm, in the translational entropy.
constexpr double E = 2.718281828459045;

// Tolerance of the comparisons of principal moments, amu*bohr^2.
constexpr double MomentTolerance = 0.001;

// ---- Printed layouts --------------------------------------------------------

// A value that is no finite number prints as asterisks; the line before it
// names the quantity, so that a table never shows a silent NaN.
void GuardFinite(Session& s, std::string_view name, double v) {
  if (std::isfinite(v)) return;
  s.log.Line(" WARNING! " + std::string(Trim(name)) + " is not a finite number and is printed as asterisks");
}

// " Qelec = " E15.5 "   ln(Qelec)=" F12.5 "   lg(Qelec)=" F12.5
void QLine(Session& s, std::string_view name, double q) {
  const std::string n(name);
  GuardFinite(s, "Q" + n, q);
  s.log.Line(" Q" + n + " = " + FmtE(q, 15, 5) + "   ln(Q" + n + ")=" + FmtF(std::log(q), 12, 5) + "   lg(Q" + n +
             ")=" + FmtF(std::log10(q), 12, 5));
}

// A heat capacity or an entropy, J/K/mol, with its cal and Hartree values.
void CLine(Session& s, const std::string& label, double v) {
  GuardFinite(s, label.substr(0, label.find('=')), v);
  s.log.Line(label + FmtF(v, 10, 3) + " J/K/mol" + FmtF(v * JToCal, 10, 3) + " cal/K/mol" +
             FmtF(v * JPerMolToHartree, 16, 8) + " Hartree/K");
}

// An energy, kJ/mol, with its kcal and Hartree values.
void ELine(Session& s, const std::string& label, double v) {
  GuardFinite(s, label.substr(0, label.find('=')), v);
  s.log.Line(label + FmtF(v, 10, 3) + "  kJ/mol" + FmtF(v * JToCal, 10, 3) + "  kcal/mol" +
             FmtF(v * KJPerMolToHartree, 16, 8) + " Hartree  ");
}

// The seven-line block of one contribution; the totals carry the zero-point
// energy between CP and U.
void Block(Session& s, std::string_view name, const TDResult& r, const double* zpeTot = nullptr) {
  const std::string n(name);
  QLine(s, n, r.q);
  CLine(s, " CV" + n + "= ", r.cv);
  CLine(s, " CP" + n + "= ", r.cp);
  if (zpeTot) ELine(s, " ZPEtot ", *zpeTot);
  ELine(s, " U" + n + " = ", r.u);
  ELine(s, " H" + n + " = ", r.h);
  CLine(s, " S" + n + " = ", r.s);
  ELine(s, " G" + n + " = ", r.g);
}

constexpr std::string_view ModeHead1 =
    "No. Frequency Intensity  Scaled  Reduced Used  Theta     Svib      ZPE   (H-H0)     Hvib     Gvib     Cvib    Qvib  ";
constexpr std::string_view ModeHead2 =
    "      cm-1      km/mol    Freq     Mass  inTD?   K    J/K/mol   kJ/mol   kJ/mol   kJ/mol   kJ/mol  J/K/mol          ";
const std::string Ruler118(118, '-');

// ---- Steps of the evaluation -------------------------------------------------

void Electronic(Session& s, ThermoState& t, bool quiet) {
  const double T = s.opt.temperature;
  const double g = s.opt.multiplicity;
  TDResult& r = t.elec;
  r = TDResult{};
  r.q = g;
  r.lnQ = std::log(g);
  r.s = GasConstant * std::log(g);
  r.g = -(GasConstant * std::log(g)) * T / 1000.0;
  if (quiet) return;
  Block(s, "elec", r);
}

void Translational(Session& s, ThermoState& t, bool quiet) {
  const double T = s.opt.temperature, P = s.opt.pressure, M = s.molMass;
  const double a = 2.0 * Pi * M * AtomicMassUnit * Boltzmann * T;
  const double h3 = Planck * Planck * Planck;
  const double root = std::sqrt(a * a * a);
  t.qmom = root / h3 / Avogadro;
  t.fmom = -(GasConstant * T / 1000.0) * std::log(t.qmom);

  TDResult& r = t.tran;
  r.q = (root / h3) * GasConstant * T / P / Avogadro;
  r.cv = 1.5 * GasConstant;
  r.cp = 2.5 * GasConstant;
  r.u = 0.0015 * GasConstant * T;
  r.h = 0.0025 * GasConstant * T;
  // The Sackur-Tetrode formula.
  r.s = GasConstant * (1.5 * std::log(M * Avogadro * AtomicMassUnit) + 1.5 + 2.5 * std::log(T) - std::log(P) +
                       std::log(GasConstant) +
                       std::log(E * std::pow(2.0 * Pi * Boltzmann, 1.5) / (h3 * std::pow(Avogadro, 2.5))));
  r.g = r.h - (T / 1000.0) * r.s;
  if (s.opt.transitionState) {
    // One translational degree of freedom is the reaction coordinate.
    r.q = std::pow(r.q, 2.0 / 3.0);
    r.u = GasConstant * T / 1000.0;
    r.h = 2.0 * GasConstant * T / 1000.0;
    r.cv = GasConstant;
    r.cp = 2.0 * GasConstant;
    r.s = r.s * 2.0 / 3.0;
    r.g = r.h - (T / 1000.0) * r.s;
  }
  r.lnQ = std::log(r.q);
  if (quiet) return;
  s.log.Line(" *** Translational contribution ***");
  if (s.opt.transitionState) {
    s.log.Line(" *** Molecule is treated as a TRANSITION STATE.");
    s.log.Line(" *** One of translational degrees of freedom is ignored.");
  }
  Block(s, "tran", r);
  s.log.Line(" Momentum partition functions and Helmholz free energy to be used in liquid state calculations:");
  // The labels say Qtran: the values are those of the momentum part.
  s.log.Line(" Qmom  = " + FmtE(t.qmom, 15, 5) + "   ln(Qtran)=" + FmtF(std::log(t.qmom), 12, 5) +
             "   lg(Qtran)=" + FmtF(std::log10(t.qmom), 12, 5));
  ELine(s, " Fmom  = ", t.fmom);
}

// Principal moments of inertia (amu*bohr^2, descending) of the working
// coordinates about the centre of mass.
void PrincipalMoments(const Session& s, ThermoState& t) {
  const size_t n = std::min({static_cast<size_t>(std::max(s.nAtoms, 0)), s.xyz.size(), s.atomMass.size()});
  double mass = 0.0;
  Vec3 c{0.0, 0.0, 0.0};
  for (size_t i = 0; i < n; ++i) {
    mass += s.atomMass[i];
    for (int k = 0; k < 3; ++k) c[k] += s.atomMass[i] * s.xyz[i][k];
  }
  if (mass != 0.0)
    for (double& v : c) v /= mass;
  double xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;
  for (size_t i = 0; i < n; ++i) {
    const double m = s.atomMass[i];
    const double x = s.xyz[i][0] - c[0], y = s.xyz[i][1] - c[1], z = s.xyz[i][2] - c[2];
    xx += m * (y * y + z * z);
    yy += m * (x * x + z * z);
    zz += m * (x * x + y * y);
    xy -= m * x * y;
    xz -= m * x * z;
    yz -= m * y * z;
  }
  const std::array<double, 6> tensor{xx, yy, zz, xy, xz, yz};
  if (!t.tensorKnown || tensor != t.tensorSeen) {
    Eigensystem e = Jacobi({{xx, xy, xz}, {xy, yy, yz}, {xz, yz, zz}}, -1);
    t.momentsSeen = {e.values[0], e.values[1], e.values[2]};
    t.tensorSeen = tensor;
    t.tensorKnown = true;
  }
  t.moments = t.momentsSeen;
}

void Rotational(Session& s, ThermoState& t, bool quiet) {
  PrincipalMoments(s, t);
  double& I1 = t.moments[0];
  double& I2 = t.moments[1];
  double& I3 = t.moments[2];
  const bool eq12 = std::fabs(I1 - I2) < MomentTolerance;
  const bool eq23 = std::fabs(I2 - I3) < MomentTolerance;
  t.linear = eq12 && std::fabs(I3) < MomentTolerance;
  // A nearly linear molecule (a triatomic bent by a few tenths of a degree)
  // passes the moment test, but a log that prints 3N-6 vibrations treated it
  // as bent: so do we, or a vibration would count as a rotation.
  bool bentByLog = false;
  if (t.linear && s.nAtoms >= 3) {
    const auto given = std::count_if(s.modes.begin(), s.modes.end(), [](const VibMode& m) { return m.given; });
    bentByLog = given == 3 * s.nAtoms - 6;
    if (bentByLog) t.linear = false;
  }
  if (!quiet && bentByLog)
    s.log.Line(" WARNING! The moments of inertia are those of a linear molecule, but the log gives 3N-6"
               " vibrations: the molecule is treated as non-linear");
  if (!quiet) {
    s.log.Line(" Principal moments of inertia, a.u." + FmtF(I1, 20, 7) + FmtF(I2, 20, 7) + FmtF(I3, 20, 7));
    // The symmetric tops are tested in the ascending order, which the sorted
    // moments never show: a symmetric top gets no line.
    if (eq12 && eq23) s.log.Line(" Spherical top");
    else if (eq12 && t.linear) s.log.Line(" Linear top");
    else if (eq23 && I2 > I1) s.log.Line(" Prolate symmetric top");
    else if (eq12 && I3 > I2) s.log.Line(" Oblate symmetric top");
    else if (std::fabs(I1 - I2) > MomentTolerance && std::fabs(I2 - I3) > MomentTolerance) s.log.Line(" Asymmetric top");
  }
  const double toSI = AtomicMassUnit * BohrRadius * BohrRadius;
  I1 *= toSI;
  I2 *= toSI;
  I3 *= toSI;
  if (!quiet) {
    s.log.Line(t.linear ? " Linear molecule" : " Non-linear molecule");
    StatusMessage(s, t.linear ? " Linear molecule" : " Non-linear molecule");  // not under /0
  }

  const double T = s.opt.temperature, sigma = s.opt.rotationNumber;
  const double R = GasConstant;
  TDResult& r = t.rot;
  r = TDResult{};
  if (t.moments[0] < MomentTolerance * toSI) {
    // A single atom does not rotate: Q = 1, and nothing else.
  } else if (!t.linear) {
    const double A = 8.0 * Pi * Pi * Boltzmann * T / (Planck * Planck);
    r.q = std::sqrt(Pi * A * A * A * I1 * I2 * I3) / sigma;
    r.cv = r.cp = 1.5 * R;
    r.u = r.h = 0.0015 * R * T;
    r.s = R * (1.5 * (std::log(8.0 * Pi * Pi * Boltzmann / (Planck * Planck)) + std::log(T)) + 1.5 -
               std::log(sigma / std::sqrt(Pi)) + 0.5 * std::log(I1 * I2 * I3));
  } else {
    r.q = 8.0 * Pi * Pi * I1 * Boltzmann * T / (sigma * Planck * Planck);
    r.cv = r.cp = R;
    r.u = r.h = 0.001 * R * T;
    r.s = R * (std::log(I1) + 1.0 - std::log(sigma) + std::log(8.0 * Pi * Pi * Boltzmann / (Planck * Planck)) +
               std::log(T));
  }
  r.g = r.h - (T / 1000.0) * r.s;
  r.lnQ = std::log(r.q);
  if (quiet) return;
  Block(s, "rot", r);
  s.log.Line(" *** Vibrational contribution ***");
  s.log.Line("Scaling factor for frequencies:" + FmtF(s.opt.freqScale, 9, 4));
  if (s.opt.positiveFreqLimit != 0.0)
    s.log.Line("WARNING! /FP option set to" + FmtF(s.opt.positiveFreqLimit, 14, 4) +
               " : Some imaginary frequencies will be treated as real ones");
  if (s.opt.raman)
    s.log.Line("WARNING! /RAMAN option found in command line: RAMAN SCATTERING ACTIVITIES in A**4/AMU will be printed "
               "instead of IR intensities");
  s.log.Line(ModeHead1);
  s.log.Line(ModeHead2);
  s.log.Line(Ruler118);
}

// The limits of the full evaluation of a run with a specification file: the
// report of reduced masses and the reduced-mass limit of /RX.
void ReducedMassLimit(Session& s, const ThermoState& t) {
  std::error_code ec;
  if (s.files.specName.empty() || !std::filesystem::exists(s.files.specName, ec)) return;
  MainLog tdo;
  tdo.Open(s.files.tdoName);
  if (s.opt.freqBottom != 0.0)
    s.log.Line("Bottom limit for frequencies to be used in TD calculations:" + FmtF(s.opt.freqBottom, 12, 4));
  // The /RX default is NotGiven, never 1e10, so this line always stands; the
  // comparison is kept as it is because every MainLog has always carried the line.
  if (s.opt.redMassTop != 1.0e10)
    s.log.Line("Upper limit for reduced masses to be used in TD calculations:" + FmtF(s.opt.redMassTop, 12, 4));
  if (s.opt.allPositive)
    s.log.Line(" ALLPOSITIVE key found: All negative frequencies will be treated as they would be positive");
  RecalculateFrequencies(s, tdo);
  for (VibMode& m : s.modes)
    if (m.redMass > s.opt.redMassTop) m.use = ModeUse::AboveRedMassTop;
  tdo.Close();
  if (s.opt.recalcFreq) {
    // The recalculated frequencies are scaled as the log's were.
    for (VibMode& m : s.modes) m.scaledFreq = m.freq * s.opt.freqScale;
    MarkUsedModes(s, t.linear);
  }
}

void Vibrational(Session& s, ThermoState& t, bool quiet) {
  const double T = s.opt.temperature, R = GasConstant;
  const size_t n = s.modes.size();
  t.SizeFor(n);
  std::fill(t.theta.begin(), t.theta.end(), 0.0);
  std::fill(t.svib.begin(), t.svib.end(), 0.0);
  std::fill(t.zpe.begin(), t.zpe.end(), 0.0);
  std::fill(t.hh0.begin(), t.hh0.end(), 0.0);
  std::fill(t.hvib.begin(), t.hvib.end(), 0.0);
  std::fill(t.gvib.begin(), t.gvib.end(), 0.0);
  std::fill(t.cvib.begin(), t.cvib.end(), 0.0);
  std::fill(t.qvib.begin(), t.qvib.end(), 1.0);

  TDResult& v = t.vib;
  v = TDResult{};
  double hh0Sum = 0.0;
  t.zpeTot = 0.0;
  t.nVibUsed = 0;
  for (size_t i = 0; i < n; ++i) {
    VibMode& m = s.modes[i];
    if (m.use == ModeUse::Used || m.use == ModeUse::ImaginaryAsReal) {
      if (m.scaledFreq < 0.0 && (s.opt.allPositive || m.use == ModeUse::ImaginaryAsReal)) m.scaledFreq = -m.scaledFreq;
      const double nu = m.scaledFreq;
      const double theta = 100.0 * Planck * nu * SpeedOfLight / Boltzmann;
      const double u = theta / T;
      t.theta[i] = theta;
      if (u <= 300.0) {
        const double ex = std::exp(u);
        t.qvib[i] = 1.0 / (1.0 - std::exp(-u));
        t.cvib[i] = R * u * u * ex / ((ex - 1.0) * (ex - 1.0));
        t.svib[i] = R * (u / (ex - 1.0) - std::log(1.0 - std::exp(-u)));
        t.hh0[i] = (theta * R / (ex - 1.0)) / 1000.0;
      }
      t.zpe[i] = nu * (50.0 * Planck * Avogadro) * SpeedOfLight / 1000.0;
      t.hvib[i] = t.hh0[i] + t.zpe[i];
      t.gvib[i] = t.hvib[i] - T * t.svib[i] / 1000.0;

      v.q *= t.qvib[i];
      v.s += t.svib[i];
      t.zpeTot += t.zpe[i];
      hh0Sum += t.hh0[i];
      v.h += t.hvib[i];
      v.g += t.gvib[i];
      v.cv += t.cvib[i];
      ++t.nVibUsed;
    }
    if (quiet) continue;
    for (double v : {t.svib[i], t.zpe[i], t.hh0[i], t.hvib[i], t.gvib[i], t.cvib[i], t.qvib[i]})
      if (!std::isfinite(v)) {
        s.log.Line(" WARNING! Mode" + FmtI(static_cast<long long>(i + 1), 5) +
                   " has values that are not finite numbers; they are printed as asterisks");
        break;
      }
    s.log.Line(FmtI(static_cast<long long>(i + 1), 4) + FmtF(m.freq, 9, 3) + FmtF(m.intensity, 9, 3) +
                 FmtF(m.scaledFreq, 9, 3) + FmtF(m.redMass, 9, 2) + FmtX(1) + FmtI(static_cast<int>(m.use), 2) + FmtF(t.theta[i], 9, 3) +
                 FmtF(t.svib[i], 9, 3) + FmtF(t.zpe[i], 9, 3) + FmtF(t.hh0[i], 9, 3) + FmtF(t.hvib[i], 9, 3) +
                 FmtF(t.gvib[i], 9, 3) + FmtF(t.cvib[i], 9, 3) + FmtE(t.qvib[i], 12, 5));
  }
  v.u = v.h;
  v.cp = v.cv;
  v.lnQ = std::log(v.q);
  if (quiet) return;
  s.log.Line(Ruler118);
  s.log.Line(" Total for " + FmtI(t.nVibUsed, 4) + " vibrations" + FmtX(26) + FmtF(v.s, 9, 3) + FmtF(t.zpeTot, 9, 3) +
             FmtF(hh0Sum, 9, 3) + FmtF(v.h, 9, 3) + FmtF(v.g, 9, 3) + FmtF(v.cv, 9, 3) + FmtE(v.q, 12, 5));
}

void Totals(Session& s, ThermoState& t, bool quiet) {
  TDResult& r = t.tot;
  r.q = t.elec.q * t.tran.q * t.rot.q * t.vib.q;
  r.lnQ = std::log(r.q);
  r.cv = t.tran.cv + t.rot.cv + t.vib.cv;
  r.cp = t.tran.cp + t.rot.cp + t.vib.cv;
  // The vibrational energy holds the zero-point energy: U and H are taken
  // from the bottom of the well.
  r.u = t.tran.u + t.rot.u + t.vib.h;
  r.h = t.tran.h + t.rot.h + t.vib.h;
  r.s = t.elec.s + t.tran.s + t.rot.s + t.vib.s;
  r.g = t.elec.g + t.tran.g + t.rot.g + t.vib.g;
  if (quiet) return;

  s.log.Line(" *** Total for ELEC+TRANS+ROT+VIBR contributions ***");
  Block(s, "tot", r, &t.zpeTot);
  s.log.Line(" *** Total energy corrected by TD functions ****");
  s.log.Line(" Minimum electronic-nuclear energy was taken from the input file at step:" + FmtI(s.lowestEnergyStep, 4));
  s.log.Line(" Minimum Etot: " + FmtF(s.lowestEnergy, 16, 8) + "  (Please check the program decision manually!)");
  s.log.Line(" Base Energy : " + FmtF(s.electronicEnergy, 16, 8) +
             "  (Etot used as a base for TD calculations, it is recommended to check it!)");
  const double e = s.electronicEnergy;
  s.log.Line(" Etot        = " + FmtF(e, 16, 8));
  auto sum = [&](std::string_view label, std::string_view name, double kj) {
    const double h = kj * KJPerMolToHartree;
    s.log.Line(std::string(label) + FmtF(e + h, 16, 8) + FmtX(10) + std::string(name) + FmtF(h, 16, 8) + ")");
  };
  sum(" Etot+ZPEtot = ", " (ZPEtot = ", t.zpeTot);
  sum(" Etot+Utot   = ", " (Utot   = ", r.u);
  sum(" Etot+Htot   = ", " (Htot   = ", r.h);
  sum(" Etot+Gtot   = ", " (Gtot   = ", r.g);
}

}  // namespace

void ThermoState::SizeFor(size_t nModes) {
  for (auto* a : {&theta, &svib, &zpe, &hh0, &hvib, &gvib, &cvib, &qvib})
    if (a->size() != nModes) a->assign(nModes, 0.0);
}

void MarkUsedModes(Session& s, bool linear) {
  const int limit = s.nImag + 6 - (linear ? 1 : 0);
  const auto& zero = s.zeroModes;
  for (size_t k = 0; k < s.modes.size(); ++k) {
    VibMode& m = s.modes[k];
    const int i = static_cast<int>(k) + 1;
    m.use = ModeUse::Used;
    if (m.freq < s.opt.freqBottom) m.use = ModeUse::BelowFreqBottom;
    if (s.nZero > 0) {
      if (std::find(zero.begin(), zero.end(), i) != zero.end()) m.use = ModeUse::Zero;
    } else if (i <= limit) {
      m.use = ModeUse::Zero;
    }
    if (m.freq < 0.0 && (s.opt.allPositive || m.freq > s.opt.positiveFreqLimit)) m.use = ModeUse::ImaginaryAsReal;
    if (!m.given) m.use = ModeUse::Zero;  // a slot of a projected job that the log left empty
  }
}

void ThermoAtTP(Session& s, bool quiet, RotationTreatment* rotations) {
  ThermoState& t = s.thermo;
  Options& o = s.opt;

  // A standard state given as a concentration is the pressure of the ideal
  // gas at it, at each temperature.
  if (o.concentration > 0.0) o.pressure = o.concentration * 1000.0 * GasConstant * o.temperature;
  if (!quiet) {
    s.log.Line(" Temperature   : " + FmtF(o.temperature, 12, 2) + " K ");
    s.log.Line(" Pressure      : " + FmtF(o.pressure, 12, 2) + " Pa");
    if (o.concentration > 0.0) {
      const double shift = GasConstant * o.temperature / 1000.0 * std::log(o.pressure / 101325.0);
      s.log.Line(" Concentration: " + FmtF(o.concentration, 12, 4) + " mol/L; G from 1 atm to it:" +
                 FmtF(shift, 10, 3) + "  kJ/mol" + FmtF(shift * JToCal, 10, 3) + "  kcal/mol");
    }
    s.log.Line(" Rot. number   : " + FmtI(std::llround(o.rotationNumber), 12));
    s.log.Line(" Molecular mass: " + FmtF(s.molMass, 12, 2) + " amu");
    if (o.transitionState) s.log.Line(" Transition state thermodynamics requested");
    s.log.Line(" *** Electronic contribution ***");
  }
  if (o.multiplicity <= 0) {
    if (!quiet)
      s.log.Line(" WARNING! Multiplicity of molecule was not set properly! Using default value (1).");
    o.multiplicity = 1;
  }
  if (!quiet) s.log.Line(" Spin multiplicity of molecule =" + FmtI(o.multiplicity, 2));

  Electronic(s, t, quiet);
  Translational(s, t, quiet);
  if (!quiet) s.log.Line(" *** Rotational contribution ***");
  Rotational(s, t, quiet);

  MarkUsedModes(s, t.linear);
  if (!quiet) ReducedMassLimit(s, t);

  Vibrational(s, t, quiet);
  Totals(s, t, quiet);

  const int nRot = rotations ? rotations->Evaluate(s, quiet) : 0;
  if (quiet) {
    TDResult r = t.tot;
    std::string warning;
    if (nRot > 0) {
      r = rotations->RowTotals();
      const double percent = rotations->ErrorPercent();
      if (percent >= 1.0)
        warning = "  <--WARNING! There were " + FmtI(std::llround(percent), 3) +
                  "% errors during Pitzer interpolation. Data for the given T can be erroneous!";
    }
    t.tableRow = r;
    t.quantumTableRow = nRot > 0 ? rotations->QuantumRowTotals() : r;
    for (auto [name, v] : {std::pair{"CV", r.cv}, {"CP", r.cp}, {"U", r.u}, {"H", r.h}, {"S", r.s}, {"G", r.g},
                           {"Q", r.q}, {"ln(Q)", r.lnQ}})
      if (!std::isfinite(v))
        s.log.Line(" WARNING! " + std::string(name) + " at T =" + FmtF(o.temperature, 10, 3) +
                   " K is not a finite number and is printed as asterisks");
    s.log.Line(FmtF(o.temperature, 10, 3) + FmtF(r.cv, 10, 3) + FmtF(r.cp, 10, 3) + FmtF(r.u, 10, 3) +
               FmtF(r.h, 10, 3) + FmtF(r.s, 10, 3) + FmtF(r.g, 10, 3) + FmtE(r.q, 15, 5) + FmtF(r.lnQ, 12, 5) +
               warning);
  }
}

}  // namespace quintor
