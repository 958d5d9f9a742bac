#include "rotations/generated_coordinates.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "io/file_names.h"
#include "io/fortran_io.h"
#include "numeric/constants.h"

namespace quintor {

using namespace geom;
namespace rc = constants;

namespace {

constexpr size_t kTemplateLines = 20;
constexpr size_t kTemplateWidth = 255;
const std::string Ruler60(60, '-');

std::string TrimmedRight(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\r' || s.back() == '\t')) s.pop_back();
  return s;
}

// One atom as the report and the GAMESS-style files show it, in angstrom.
std::string AtomLine(const std::string& name, int z, const Vec3& p) {
  std::string line(1, ' ');
  line += FmtA(name, 5);
  line += FmtX(8);
  line += FmtI(z, 2);
  line += FmtX(7);
  for (double v : p) line += FmtF(v * rc::BohrToAngstrom, 12, 6);
  return line;
}

std::string ThreeF(const QuasiEnergies& q) { return FmtF(q.e1, 10, 6) + FmtF(q.e2, 10, 6) + FmtF(q.e3, 10, 6); }

}  // namespace

ScanTemplate DefaultScanTemplate() {
  return {{" $CONTRL SCFTYP=RHF RUNTYP=ENERGY MPLEVL=2 $END", " $SYSTEM TIMLIM=10000 MEMORY=1000000 $END",
           " $SCF DIRSCF=.TRUE. $END",
           " $BASIS GBASIS=N311 NGAUSS=6 NDFUNC=2 NFFUNC=1 NPFUNC=1 DIFFSP=.TRUE. $END", " $DATA",
           " Rotation potential at MP2/6-311+G(2df,p)//MP2/6-31G(d)", " C1", "%GEOGAM%", " $END"},
          ".inp"};
}

ScanTemplate LoadScanTemplate(const std::string& patternName, const std::string& inputName) {
  namespace fs = std::filesystem;
  const std::string name = TrimmedRight(patternName);
  if (name.empty()) return DefaultScanTemplate();
  std::string lower = name;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  const fs::path beside = fs::path(inputName).parent_path();
  std::error_code ec;
  for (const fs::path& p : {fs::path(name), fs::path(lower), beside / name, beside / lower}) {
    if (!fs::is_regular_file(p, ec)) continue;
    std::ifstream in(p);
    ScanTemplate t;
    std::string line;
    while (t.lines.size() < kTemplateLines && std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      t.lines.push_back(line.substr(0, kTemplateWidth));
    }
    const std::string file = p.filename().string();
    const size_t dot = file.rfind('.');
    t.extension = dot == std::string::npos ? "" : file.substr(dot);
    return t;
  }
  return DefaultScanTemplate();
}

QuasiEnergies StructuralIndexes(const std::vector<int>& nuclear, const std::vector<Vec3>& xyz) {
  QuasiEnergies q;
  for (size_t i = 0; i < xyz.size(); ++i)
    for (size_t j = i + 1; j < xyz.size(); ++j) {
      const double r = Norm(xyz[i] - xyz[j]);
      if (r <= 0.0) continue;
      const double w = nuclear[i] + 10.0 * nuclear[j];
      q.e1 += w * std::exp(-r);
      q.e2 += w / (r * r);
      q.e3 += w / r;
    }
  return q;
}

std::vector<ScanPoint> ScanPoints(const ScanRotor& rotor, const std::vector<int>& nuclear,
                                  const std::vector<Vec3>& xyz, double step) {
  std::vector<ScanPoint> points;
  if (step < MinimumScanStep) return points;
  const int count = static_cast<int>(std::lround(360.0 / step));
  for (int k = 1; k <= count; ++k) {
    ScanPoint p;
    p.angle = (k - 1) * step;
    p.xyz = xyz;
    RotateAtoms(rotor.axis.p1, rotor.axis.p2, p.angle, rotor.group, p.xyz);
    p.absolute = StructuralIndexes(nuclear, p.xyz);
    points.push_back(std::move(p));
  }
  // Each index shifted by its lowest value and divided by its range.
  const auto relative = [&](double QuasiEnergies::*e) {
    double lo = points[0].absolute.*e, hi = lo;
    for (const ScanPoint& p : points) {
      lo = std::min(lo, p.absolute.*e);
      hi = std::max(hi, p.absolute.*e);
    }
    const double range = hi - lo > 0.0 ? hi - lo : 1.0;
    for (ScanPoint& p : points) p.relative.*e = (p.absolute.*e - lo) / range;
  };
  relative(&QuasiEnergies::e1);
  relative(&QuasiEnergies::e2);
  relative(&QuasiEnergies::e3);
  for (size_t k = 1; k < points.size(); ++k)
    for (size_t j = 0; j < k; ++j) {
      const QuasiEnergies& a = points[k].relative;
      const QuasiEnergies& b = points[j].relative;
      if (std::fabs(a.e1 - b.e1) < EquivalenceThreshold && std::fabs(a.e2 - b.e2) < EquivalenceThreshold &&
          std::fabs(a.e3 - b.e3) < EquivalenceThreshold) {
        points[k].equivalentTo = static_cast<int>(j + 1);
        break;
      }
    }
  return points;
}

std::string ScanFileName(const std::string& inputName, const ScanRotor& rotor, const ScanPoint& p,
                         const std::string& extension) {
  std::string base = BaseName(inputName);
  if (base.empty()) base = ReplaceExtension(false, inputName, "");
  if (base.empty() || base.back() == '.') base = inputName;
  while (!base.empty() && base.back() == '.') base.pop_back();
  return base + (p.equivalentTo < 0 ? "_u_" : "_e_") + std::to_string(rotor.number) + "_" +
         std::to_string(std::lround(p.angle)) + extension;
}

std::vector<ScanPoint> GenerateScanInputs(MainLog& log, const ScanRotor& rotor, const std::vector<int>& nuclear,
                                          const std::vector<std::string>& names, const std::vector<Vec3>& xyz,
                                          double step, const ScanTemplate& job, const std::string& inputName) {
  std::vector<ScanPoint> points = ScanPoints(rotor, nuclear, xyz, step);
  if (points.empty()) return points;
  log.Line(" Generation of internal rotation coordinates. Rotation step: " + FmtF(step, 10, 4) + " deg.");
  log.Line(" Absolute structural indexes (quasi-energies):");
  log.Line(" No.  Angle          E1                  E2                  E3");
  for (size_t k = 0; k < points.size(); ++k) {
    const ScanPoint& p = points[k];
    log.Line(FmtI(static_cast<long long>(k + 1), 3) + FmtF(p.angle, 8, 2) + FmtG(p.absolute.e1, 20, 8) +
             FmtG(p.absolute.e2, 20, 8) + FmtG(p.absolute.e3, 20, 8));
  }
  log.Line(" Relative structural indexes and equivalence relations:");
  log.Line(" No.  Angle         E1                  E2                  E3      Eq.Rel.Index");
  for (size_t k = 0; k < points.size(); ++k) {
    const ScanPoint& p = points[k];
    log.Line(FmtI(static_cast<long long>(k + 1), 3) + FmtF(p.angle, 8, 2) + FmtF(p.relative.e1, 15, 8) + FmtX(5) +
             FmtF(p.relative.e2, 15, 8) + FmtX(5) + FmtF(p.relative.e3, 15, 8) + FmtX(5) + FmtI(p.equivalentTo, 4));
  }
  std::string thresholds = " Equivalence tresholds:" + FmtX(11);
  for (int k = 0; k < 3; ++k) thresholds += FmtF(EquivalenceThreshold, 15, 8) + FmtX(5);
  log.Line(TrimmedRight(thresholds));

  const QuasiEnergies limits{EquivalenceThreshold, EquivalenceThreshold, EquivalenceThreshold};
  const size_t nAtoms = xyz.size();
  for (size_t k = 0; k < points.size(); ++k) {
    ScanPoint& p = points[k];
    log.Line(" Internal rotation:" + FmtI(rotor.number, 2) + "  Rotation angle:" + FmtF(p.angle, 6, 1));
    if (p.equivalentTo < 0) {
      log.Line(" Unique point     :" + FmtI(static_cast<long long>(k + 1), 2));
      log.Line(" Structural quasi-energy indexes:");
      log.Line(" This point: " + ThreeF(p.relative));
    } else {
      const ScanPoint& u = points[static_cast<size_t>(p.equivalentTo - 1)];
      log.Line(" This point is equivalent to point:" + FmtI(p.equivalentTo, 2) + " (angle:" + FmtF(u.angle, 6, 1) +
               ")");
      log.Line(" Structural quasi-energy indexes:");
      log.Line(" This   point  :" + ThreeF(p.relative));
      log.Line(" Unique point  :" + ThreeF(u.relative));
      log.Line(" Equiv treshold:" + ThreeF(limits));
    }
    log.Line(" Coordinates after int.rotation, rotation angle =" + FmtF(p.angle, 10, 4));
    log.Line(Ruler60);
    for (size_t a = 0; a < nAtoms; ++a) log.Line(AtomLine(names[a], nuclear[a], p.xyz[a]));
    log.Line(Ruler60);

    p.file = ScanFileName(inputName, rotor, p, job.extension);
    std::ofstream out(p.file, std::ios::out | std::ios::trunc);
    for (const std::string& line : job.lines) {
      if (line.find("%GEO") == std::string::npos) {
        out << TrimmedRight(line) << "\n";
      } else if (line.find("%GEOGAM") != std::string::npos || line.find("%GEO%") != std::string::npos) {
        for (size_t a = 0; a < nAtoms; ++a) out << AtomLine(names[a], nuclear[a], p.xyz[a]) << "\n";
      } else if (line.find("%GEOG98") != std::string::npos) {
        for (size_t a = 0; a < nAtoms; ++a) {
          out << ' ' << FmtA(names[a], 5) << FmtX(12);
          for (double v : p.xyz[a]) out << FmtF(v * rc::BohrToAngstrom, 12, 6);
          out << "\n";
        }
      }
    }
  }
  return points;
}

}  // namespace quintor
