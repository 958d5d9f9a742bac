#include "viewer/structure_files.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>

#include "viewer/editing.h"
#include "viewer/zmatrix_tools.h"

namespace quintor {

namespace {

constexpr double kBohrToA = 1.0 / constants::AngstromToBohr;

std::string Coordinates(const Vec3& x, const char* between) {
  char buffer[160];
  std::snprintf(buffer, sizeof buffer, "%18.10f%s%18.10f%s%18.10f%s", x[0] * kBohrToA, between, x[1] * kBohrToA,
                between, x[2] * kBohrToA, between);
  return buffer;
}

// The engine's method as a MOPAC keyword.
const char* MopacMethod(int method) {
  switch (method) {
    case 1: return "MNDO";
    case 2: return "AM1";
    case 4: return "MNDOD";
    default: return "PM3";
  }
}

}  // namespace

StructureFormat StructureFormatOf(const std::string& path) {
  const size_t dot = path.rfind('.');
  if (dot == std::string::npos) return StructureFormat::None;
  std::string ext = path.substr(dot + 1);
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (ext == "xyz") return StructureFormat::Xyz;
  if (ext == "gjf" || ext == "com" || ext == "gau") return StructureFormat::Gaussian;
  if (ext == "mop" || ext == "dat") return StructureFormat::Mopac;
  if (ext == "inp") return StructureFormat::Gamess;
  return StructureFormat::None;
}

bool WriteStructureFile(const Session& s, const ViewerState& v, const std::string& path) {
  const StructureFormat format = StructureFormatOf(path);
  if (format == StructureFormat::None) return false;
  std::ofstream out(path);
  if (!out) return false;
  const int multiplicity = std::max(1, s.opt.multiplicity);
  const std::string title = "Structure written by Quintor";
  switch (format) {
    case StructureFormat::Xyz: out << s.nAtoms << "\n" << title << "\n"; break;
    case StructureFormat::Gaussian:
      out << "# SP\n\n" << title << "\n\n" << s.opt.charge << " " << multiplicity << "\n";
      break;
    case StructureFormat::Mopac:
      out << MopacMethod(s.opt.engineMethod) << " CHARGE=" << s.opt.charge << " 1SCF\n" << title << "\n\n";
      break;
    case StructureFormat::Gamess:
      out << " $CONTRL COORD=CART UNITS=ANGS ICHARG=" << s.opt.charge << " MULT=" << multiplicity << " $END\n"
          << " $DATA\n" << title << "\nC1\n";
      break;
    case StructureFormat::None: break;
  }
  for (int i = 0; i < s.nAtoms; ++i) {
    std::string symbol = SymbolOf(s, v, i + 1);
    symbol.resize(std::max<size_t>(symbol.size(), 3), ' ');
    const Vec3& x = s.xyz[i];
    switch (format) {
      case StructureFormat::Mopac: {
        char buffer[160];
        std::snprintf(buffer, sizeof buffer, "%18.10f 1%18.10f 1%18.10f 1", x[0] * kBohrToA, x[1] * kBohrToA,
                      x[2] * kBohrToA);
        out << symbol << buffer << "\n";
        break;
      }
      case StructureFormat::Gamess: out << symbol << " " << s.atomicNumber[i] << ".0" << Coordinates(x, "") << "\n"; break;
      default: out << symbol << Coordinates(x, "") << "\n"; break;
    }
  }
  if (format == StructureFormat::Gaussian) out << "\n";
  if (format == StructureFormat::Gamess) out << " $END\n";
  return static_cast<bool>(out);
}

bool WriteStructureZMatrix(const Session& s, const ViewerState& v, const std::string& path) {
  if (s.nAtoms < 1) return false;
  const auto& m = v.marked;
  const int a = m.size() >= 3 ? m[0] : 1, b = m.size() >= 3 ? m[1] : 2, c = m.size() >= 3 ? m[2] : 3;
  return WriteGaussianZMatrix(s, v, StructureZRows(s, a, b, c), path);
}

}  // namespace quintor
