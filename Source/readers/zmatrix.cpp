// Reader of Gaussian Z-matrix input (format 14): the atom rows, then the
// variables and constants sections, then the conversion to Cartesian
// coordinates. The result is one coordinate set.
//
// Frame of the conversion: the first atom stands at the origin, the second
// on the +Z axis, the third in the XZ plane on the side of +X (the
// Z-matrix orientation of Gaussian). Rows with fewer centres than three that
// stand later (after Cartesian rows) are placed the same way relative to
// their centres.
//
// Two atoms closer than 0.5 A get a warning and the run goes on; two atoms
// closer than 0.001 A coincide, which stops the run: no later analysis can
// work on such a geometry.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "io/words.h"
#include "readers/elements.h"
#include "readers/readers.h"

namespace quintor {

namespace {

constexpr int kMaxWords = 50;
constexpr size_t kWordWidth = 50;
constexpr size_t kNameWidth = 10;
constexpr double kCloseAtoms = 0.5;     // Angstrom
constexpr double kCoincident = 1.0e-3;  // Angstrom

struct ZAtom {
  std::string name;                   // the name word: later rows may use it as a centre
  int z = 0;
  bool cartesian = false;
  int nCentres = 0;                   // 0 to 3
  std::array<std::string, 3> centreName;  // named centres, resolved after the atom section
  std::array<int, 3> centre{};        // 1-based atom numbers
  std::array<double, 3> value{};      // distance, angle, dihedral; or X, Y, Z
  std::string line;                   // the row as read, for messages
};

// One place where a symbol stands in the atom rows.
struct SymbolRef {
  std::string name;
  int atom = 0;   // 0-based
  int field = 0;  // 0 to 2
  int sign = 1;
  bool defined = false;
};

struct ZMatrix {
  std::vector<ZAtom> atoms;
  std::vector<SymbolRef> refs;
};

[[noreturn]] void Fail(Session& s, const std::vector<std::string>& message, std::string_view current) {
  for (const std::string& m : message) s.log.Line(m);
  s.log.Line(" Current line:");
  s.log.Line(TrimRight(current));
  s.log.Flush();
  throw RunStop{exit_status::ReadError};
}

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool IsLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

// Upper-cased and left-justified; commas, tabs and "=" separate words as
// blanks do, as Gaussian allows.
std::string Normalised(std::string_view line) {
  std::string u = Upper(Trim(line));
  for (char& c : u)
    if (c == ',' || c == '\t' || c == '=') c = ' ';
  return u;
}

bool IsSectionTitle(std::string_view u) { return Contains(u, "VARIABLES") || Contains(u, "CONSTANTS"); }

void ParseAtomRow(Session& s, ZMatrix& zm, const std::vector<std::string>& words, std::string_view line) {
  const int k = static_cast<int>(zm.atoms.size()) + 1;
  auto wordError = [&](int w) {
    Fail(s, {" ERROR! Can not recognize word" + FmtI(w, 3) + " at atom" + FmtI(k, 5)}, line);
  };

  ZAtom a;
  a.line = std::string(line);
  a.name = words[0].substr(0, kNameWidth);
  if (IsDigit(a.name.front())) {
    std::optional<long long> z = ParseFortranInt(std::string_view(a.name).substr(0, a.name.find('.')));
    if (!z) wordError(1);
    a.z = static_cast<int>(*z);
  } else {
    a.z = ElementNumber(a.name, 110);
  }

  const int nWords = static_cast<int>(words.size());
  // A value: a number, or a symbol with an optional sign that the variables
  // and constants sections fill later.
  auto value = [&](int w, int field) {
    if (w > nWords) {
      if (a.cartesian) return;  // "C 0" alone stands at the origin
      wordError(w);
    }
    std::string_view word = words[w - 1];
    std::string_view body = word;
    int sign = 1;
    if (!body.empty() && (body.front() == '+' || body.front() == '-')) {
      sign = body.front() == '-' ? -1 : 1;
      body.remove_prefix(1);
    }
    if (!body.empty() && (IsDigit(body.front()) || body.front() == '.')) {
      std::optional<double> v = ParseFortranReal(word);
      if (!v) wordError(w);
      a.value[field] = *v;
    } else if (!body.empty() && IsLetter(body.front())) {
      zm.refs.push_back({std::string(body), k - 1, field, sign});
    } else {
      wordError(w);
    }
  };

  if (nWords >= 2 && words[1] == "0") {
    a.cartesian = true;
    for (int f = 0; f < 3; ++f) value(3 + f, f);
  } else {
    a.nCentres = std::min(k - 1, 3);
    for (int i = 0; i < a.nCentres; ++i) {
      const int w = 2 + 2 * i;
      if (w > nWords) wordError(w);
      const std::string& word = words[w - 1];
      if (IsDigit(word.front())) {
        std::optional<long long> c = ParseFortranInt(word);
        if (!c) wordError(w);
        if (*c < 1 || *c >= k)
          Fail(s, {" ERROR! Atom center " + FmtI(*c, 5) + " is not found before atom" + FmtI(k, 5)}, line);
        a.centre[i] = static_cast<int>(*c);
      } else {
        a.centreName[i] = word.substr(0, kNameWidth);
      }
      value(w + 1, i);
    }
  }
  zm.atoms.push_back(std::move(a));
}

// Named centres must be atoms of earlier rows.
void ResolveCentres(Session& s, ZMatrix& zm) {
  const int n = static_cast<int>(zm.atoms.size());
  for (int k = 1; k <= n; ++k) {
    ZAtom& a = zm.atoms[k - 1];
    for (int i = 0; i < a.nCentres; ++i) {
      const std::string& name = a.centreName[i];
      if (name.empty()) continue;
      int found = 0;
      for (int j = 1; j <= n && !found; ++j)
        if (zm.atoms[j - 1].name == name) found = j;
      if (found == 0)
        Fail(s, {" ERROR! Can not recognize atom center " + FmtA(name, 10) + " at atom" + FmtI(k, 5)},
             a.line);
      if (found >= k)
        Fail(s, {" ERROR! Atom center " + FmtA(name, 10) + " is not found before atom" + FmtI(k, 5)},
             a.line);
      a.centre[i] = found;
    }
  }
}

// A line of a variables or constants section: symbol and value.
void ReadValueLine(Session& s, ZMatrix& zm, const std::string& u, std::string_view line) {
  std::vector<std::string> words = SplitWords(u, kMaxWords, kWordWidth);
  const std::string& name = words.front();
  if (words.size() < 2) Fail(s, {" ERROR! Can not get value for symbol" + FmtA(name, 50)}, line);
  std::optional<double> v = ParseFortranReal(words[1]);
  if (!v) Fail(s, {" ERROR! Can not recognize value of variable  " + FmtA(name, 50)}, line);
  for (SymbolRef& r : zm.refs) {
    if (r.name != name) continue;
    zm.atoms[r.atom].value[r.field] = r.sign * *v;
    r.defined = true;
  }
}

bool AllDefined(const ZMatrix& zm) {
  for (const SymbolRef& r : zm.refs)
    if (!r.defined) return false;
  return true;
}

// ---- Placement -------------------------------------------------------------------

Vec3 Add(const Vec3& a, const Vec3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vec3 Sub(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec3 Scale(const Vec3& a, double f) { return {a[0] * f, a[1] * f, a[2] * f}; }
double Dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
double Norm(const Vec3& a) { return std::sqrt(Dot(a, a)); }
Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

constexpr double kTiny = 1.0e-10;

// Unit vector along a, or along +Z when a has no direction.
Vec3 UnitOr(const Vec3& a, const Vec3& fallback) {
  double n = Norm(a);
  return n > kTiny ? Scale(a, 1.0 / n) : fallback;
}

// A unit vector perpendicular to the unit vector u, towards +X where it can.
Vec3 Perpendicular(const Vec3& u) {
  Vec3 w = Sub(Vec3{1, 0, 0}, Scale(u, u[0]));
  if (Norm(w) < 1.0e-6) w = Sub(Vec3{0, 1, 0}, Scale(u, u[1]));
  return UnitOr(w, Vec3{0, 1, 0});
}

std::vector<Vec3> Place(const ZMatrix& zm, double lengthFactor) {
  const Vec3 zAxis{0, 0, 1};
  std::vector<Vec3> pos;
  pos.reserve(zm.atoms.size());
  for (const ZAtom& a : zm.atoms) {
    if (a.cartesian) {
      pos.push_back(Scale(Vec3{a.value[0], a.value[1], a.value[2]}, lengthFactor));
      continue;
    }
    const double r = a.value[0] * lengthFactor;
    const double theta = a.value[1] * constants::DegToRad;
    const double phi = a.value[2] * constants::DegToRad;
    switch (a.nCentres) {
      case 0:
        pos.push_back({0, 0, 0});
        break;
      case 1:
        pos.push_back(Add(pos[a.centre[0] - 1], Scale(zAxis, r)));
        break;
      case 2: {
        const Vec3& c = pos[a.centre[0] - 1];
        Vec3 u = UnitOr(Sub(pos[a.centre[1] - 1], c), zAxis);
        Vec3 w = Perpendicular(u);
        pos.push_back(Add(c, Add(Scale(u, r * std::cos(theta)), Scale(w, r * std::sin(theta)))));
        break;
      }
      default: {
        // Atom D bound to C, angle D-C-B, dihedral D-C-B-A.
        const Vec3& c = pos[a.centre[0] - 1];
        const Vec3& b = pos[a.centre[1] - 1];
        const Vec3& p = pos[a.centre[2] - 1];
        Vec3 bc = UnitOr(Sub(c, b), zAxis);
        Vec3 n = Cross(Sub(b, p), bc);
        n = Norm(n) > kTiny ? Scale(n, 1.0 / Norm(n)) : Perpendicular(bc);
        Vec3 m = Cross(n, bc);
        Vec3 d = Add(Scale(bc, -r * std::cos(theta)),
                     Add(Scale(m, r * std::sin(theta) * std::cos(phi)), Scale(n, r * std::sin(theta) * std::sin(phi))));
        pos.push_back(Add(c, d));
        break;
      }
    }
  }
  return pos;
}

// Close atoms are reported; coincident atoms stop the run.
void CheckDistances(Session& s, const ZMatrix& zm, const std::vector<Vec3>& pos) {
  bool coincide = false;
  const int n = static_cast<int>(pos.size());
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      double d = Norm(Sub(pos[i], pos[j])) * constants::BohrToAngstrom;
      if (d >= kCloseAtoms) continue;
      if (d < kCoincident) {
        s.log.Line(" ERROR! Atoms" + FmtI(i + 1, 5) + " and" + FmtI(j + 1, 5) + " coinside in Z-matrix!");
        coincide = true;
      } else {
        s.log.Line(" WARNING ! Atoms " + FmtI(i + 1, 4) + "(" + zm.atoms[i].name + ") and" + FmtI(j + 1, 5) +
                   "(" + zm.atoms[j].name + ") are separated by distance !");
      }
    }
  }
  if (coincide) {
    s.log.Flush();
    throw RunStop{exit_status::ReadError};
  }
}

}  // namespace

void ReadGaussianZMatrix(Session& s, LineReader& in) {
  s.log.Line(" Gaussian Z-matrix input requested");
  StatusMessage(s, " Gaussian Z-matrix input requested");
  in.Rewind();
  std::string_view line;
  const std::string label = Upper(Trim(s.opt.label));
  if (!label.empty()) {
    bool found = false;
    while (!found && in.Next(line)) found = Contains(Upper(line), label);
    if (!found) return;
  }
  in.Skip(s.opt.skipLines);

  enum class Part { Atoms, Between, Values };
  Part part = Part::Atoms;
  ZMatrix zm;
  std::string current;
  while (in.Next(line)) {
    current = std::string(line);
    const std::string u = Normalised(line);
    const bool blank = u.find_first_not_of(' ') == std::string::npos;
    const bool title = IsSectionTitle(u);
    if (part == Part::Atoms) {
      if (blank) part = Part::Between;
      else if (title) part = Part::Values;
      else ParseAtomRow(s, zm, SplitWords(u, kMaxWords, kWordWidth), current);
      continue;
    }
    if (blank) {
      part = Part::Between;  // ends a section
      continue;
    }
    if (title) {
      part = Part::Values;
      continue;
    }
    // Behind the atoms the values may also stand without a section title;
    // once every symbol has its value, what follows is not the Z-matrix's.
    if (part == Part::Between && AllDefined(zm)) break;
    part = Part::Values;
    ReadValueLine(s, zm, u, current);
  }
  if (zm.atoms.empty()) return;

  ResolveCentres(s, zm);
  if (!AllDefined(zm)) {
    std::vector<std::string> message{" ERROR! Some variables are not defined:"};
    std::vector<std::string> listed;
    for (const SymbolRef& r : zm.refs) {
      if (r.defined || std::find(listed.begin(), listed.end(), r.name) != listed.end()) continue;
      listed.push_back(r.name);
      message.push_back(" " + r.name);
    }
    Fail(s, message, current);
  }

  std::vector<Vec3> pos = Place(zm, LengthFactor(s.opt.lengthUnit));
  CheckDistances(s, zm, pos);

  StartGeometry(s);
  for (size_t i = 0; i < zm.atoms.size(); ++i) AddAtom(s, zm.atoms[i].z, pos[i]);
  if (s.iCyc == 0) s.Set(-1) = s.Set(0);
}

}  // namespace quintor
