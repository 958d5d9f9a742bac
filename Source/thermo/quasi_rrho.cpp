// Quasi-rigid-rotor harmonic-oscillator corrections of the full evaluation.
// Low modes are poorly described as harmonic vibrations: their entropy grows
// without bound as the frequency goes to zero. Grimme (Chem. Eur. J. 2012, 18,
// 9955) interpolates each mode's entropy between the harmonic value and that
// of a free rotor of the same frequency; Truhlar (J. Phys. Chem. B 2011, 115,
// 14556) raises the frequencies below a cut-off to the cut-off; Head-Gordon
// (J. Phys. Chem. C 2015, 119, 1840) interpolates the vibrational energy
// between the harmonic value and RT/2. The weights and the free-rotor moment
// are those GoodVibes uses, so that its numbers can be compared.
#include <cmath>
#include <string>

#include "io/fortran_io.h"
#include "thermo/thermo.h"

namespace quintor {

namespace {

using namespace constants;

constexpr int DampingExponent = 4;             // alpha of the damping function
constexpr double AverageMoment = 1.0e-44;      // kg m^2, Bav of the free rotor

// 1 / (1 + (cutoff/nu)^alpha): 1 for stiff modes, 0 for soft ones.
double Damping(double nu, double cutoff) { return 1.0 / (1.0 + std::pow(cutoff / nu, DampingExponent)); }

// Harmonic entropy of one mode, J/K/mol.
double HarmonicEntropy(double nu, double T) {
  const double u = 100.0 * Planck * nu * SpeedOfLight / (Boltzmann * T);
  if (u > 300.0) return 0.0;
  return GasConstant * (u / std::expm1(u) - std::log(-std::expm1(-u)));
}

// Entropy of a free rotor whose moment mu = h/(8 pi^2 c nu) is the one of a
// harmonic rotor of the mode's frequency, tempered by the average moment so
// that soft modes do not rotate with an unbounded moment. J/K/mol.
double FreeRotorEntropy(double nu, double T) {
  const double mu = Planck / (8.0 * Pi * Pi * 100.0 * SpeedOfLight * nu);
  const double eff = mu * AverageMoment / (mu + AverageMoment);
  return GasConstant * (0.5 + 0.5 * std::log(8.0 * Pi * Pi * Pi * eff * Boltzmann * T / (Planck * Planck)));
}

}  // namespace

QuasiRrho QuasiRrhoAtTP(Session& s, bool quiet) {
  const Options& o = s.opt;
  const ThermoState& t = s.thermo;
  QuasiRrho q;
  q.entropy = o.quasiEntropy;
  q.entropyCutoff = o.quasiEntropy == QuasiEntropy::None ? 0.0 : o.quasiEntropyCutoff;
  q.enthalpy = o.quasiEnthalpy;
  q.enthalpyCutoff = o.quasiEnthalpy ? o.quasiEnthalpyCutoff : 0.0;
  if (q.entropy == QuasiEntropy::None && !q.enthalpy) return q;
  q.evaluated = true;

  const double T = o.temperature;
  const double halfRT = 0.5 * GasConstant * T / 1000.0;  // kJ/mol
  if (!quiet) {
    s.log.EndLine();
    s.log.Line(" *** Quasi-RRHO corrections of the vibrational contribution ***");
    if (q.entropy == QuasiEntropy::Grimme)
      s.log.Line(" Entropy : Grimme, harmonic to free rotor, cut-off" + FmtF(q.entropyCutoff, 9, 2) +
                 " cm-1, alpha 4, Bav 1.0E-44 kg m2");
    else if (q.entropy == QuasiEntropy::Truhlar)
      s.log.Line(" Entropy : Truhlar, frequencies below" + FmtF(q.entropyCutoff, 9, 2) + " cm-1 raised to it");
    else
      s.log.Line(" Entropy : harmonic");
    if (q.enthalpy)
      s.log.Line(" Enthalpy: Head-Gordon, harmonic to RT/2, cut-off" + FmtF(q.enthalpyCutoff, 9, 2) +
                 " cm-1, alpha 4");
    else
      s.log.Line(" Enthalpy: harmonic");
    s.log.Line(" No.   Scaled   Weight     Svib  Svib(q)   Weight     Hvib  Hvib(q)");
    s.log.Line("        Freq        S  J/K/mol  J/K/mol        H   kJ/mol   kJ/mol");
    s.log.Line(std::string(70, '-'));
  }

  double sVib = 0.0, hVib = 0.0;
  for (size_t i = 0; i < s.modes.size() && i < t.svib.size(); ++i) {
    const VibMode& m = s.modes[i];
    if (m.use != ModeUse::Used && m.use != ModeUse::ImaginaryAsReal) continue;
    const double nu = m.scaledFreq;
    // The weights go by the frequency as read, the values by the scaled one,
    // as GoodVibes has them.
    const double raw = std::fabs(m.freq);
    double sq = t.svib[i], wS = 1.0, hq = t.hvib[i], wH = 1.0;
    if (nu > 0.0 && raw > 0.0) {
      if (q.entropy == QuasiEntropy::Grimme) {
        wS = Damping(raw, q.entropyCutoff);
        sq = wS * t.svib[i] + (1.0 - wS) * FreeRotorEntropy(nu, T);
      } else if (q.entropy == QuasiEntropy::Truhlar && raw <= q.entropyCutoff) {
        sq = HarmonicEntropy(q.entropyCutoff * o.freqScale, T);
      }
      if (q.enthalpy) {
        wH = Damping(raw, q.enthalpyCutoff);
        hq = wH * t.hvib[i] + (1.0 - wH) * halfRT;
      }
    }
    sVib += sq;
    hVib += hq;
    if (!quiet)
      s.log.Line(FmtI(static_cast<long long>(i + 1), 4) + FmtF(nu, 9, 3) + FmtF(wS, 9, 5) + FmtF(t.svib[i], 9, 3) +
                 FmtF(sq, 9, 3) + FmtF(wH, 9, 5) + FmtF(t.hvib[i], 9, 3) + FmtF(hq, 9, 3));
  }
  q.s = t.tot.s - t.vib.s + sVib;
  q.h = t.tot.h - t.vib.h + hVib;
  q.g = q.h - T * q.s / 1000.0;
  if (quiet) return q;

  s.log.Line(std::string(70, '-'));
  auto energy = [&](const std::string& label, double v) {
    s.log.Line(label + FmtF(v, 10, 3) + "  kJ/mol" + FmtF(v * JToCal, 10, 3) + "  kcal/mol" +
               FmtF(v * KJPerMolToHartree, 16, 8) + " Hartree  ");
  };
  s.log.Line(" Svib(q)= " + FmtF(sVib, 10, 3) + " J/K/mol" + FmtF(sVib * JToCal, 10, 3) + " cal/K/mol" +
             FmtF(sVib * JPerMolToHartree, 16, 8) + " Hartree/K");
  s.log.Line(" Stot(q)= " + FmtF(q.s, 10, 3) + " J/K/mol" + FmtF(q.s * JToCal, 10, 3) + " cal/K/mol" +
             FmtF(q.s * JPerMolToHartree, 16, 8) + " Hartree/K");
  energy(" Hvib(q)= ", hVib);
  energy(" Htot(q)= ", q.h);
  energy(" Gtot(q)= ", q.g);
  const double e = s.electronicEnergy;
  s.log.Line(" Etot+Htot(q) = " + FmtF(e + q.h * KJPerMolToHartree, 16, 8));
  s.log.Line(" Etot+Gtot(q) = " + FmtF(e + q.g * KJPerMolToHartree, 16, 8) + "  (RRHO: " +
             FmtF(e + t.tot.g * KJPerMolToHartree, 16, 8) + ")");
  s.log.Line();
  return q;
}

}  // namespace quintor
