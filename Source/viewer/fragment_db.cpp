#include "viewer/fragment_db.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

#include "analysis/bond_radii.h"
#include "io/fortran_io.h"
#include "model/elements.h"

namespace quintor {

using namespace geom;

namespace {

// Turn by `angle` about unit axis u.
Mat3 AxisRotation(const Vec3& u, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
  return Mat3{Vec3{t * u[0] * u[0] + c, t * u[0] * u[1] - s * u[2], t * u[0] * u[2] + s * u[1]},
              Vec3{t * u[0] * u[1] + s * u[2], t * u[1] * u[1] + c, t * u[1] * u[2] - s * u[0]},
              Vec3{t * u[0] * u[2] - s * u[1], t * u[1] * u[2] + s * u[0], t * u[2] * u[2] + c}};
}

std::vector<std::string_view> Tokens(std::string_view line) {
  std::vector<std::string_view> out;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r')) ++i;
    const size_t start = i;
    while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r') ++i;
    if (i > start) out.push_back(line.substr(start, i - start));
  }
  return out;
}

bool Blank(std::string_view line) { return Tokens(line).empty(); }

std::string Cut(std::string_view name) { return std::string(name.substr(0, FragmentNameWidth)); }

// The nuclear charge whose symbol is `name` (Z 1..99, any case), else 0.
int ElementNamed(std::string_view name, const ElementTable& elements) {
  const std::string wanted = Upper(Trim(name));
  if (wanted.empty()) return 0;
  for (int z = 1; z <= 99; ++z)
    if (Upper(elements.symbol(z)) == wanted) return z;
  return 0;
}

int AppendRecord(BuiltStructure& b, const FragmentRecord& r, const Vec3& pointBohr) {
  const int old = b.Atoms();
  const Vec3 first = constants::AngstromToBohr * r.atoms.front().xyz;
  for (const FragmentAtom& a : r.atoms) {
    b.z.push_back(a.z);
    b.xyz.push_back(constants::AngstromToBohr * a.xyz - first + pointBohr);
    std::vector<int> partners;
    for (int n : a.bonds) partners.push_back(n + old);
    b.bonds.push_back(std::move(partners));
  }
  return static_cast<int>(r.atoms.size());
}

// Rotation that takes unit vector a onto unit vector c (Rodrigues).
Mat3 RotationOnto(const Vec3& a, const Vec3& c) {
  const Vec3 k = Cross(a, c);
  const double s = Norm(k), cosine = Dot(a, c);
  if (s < 1e-12) {
    if (cosine > 0) return UnitMatrix();
    // Half a turn about any axis normal to a.
    Vec3 n = std::abs(a[0]) < 0.9 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
    n = Normalised(n - Dot(n, a) * a);
    Mat3 m{};
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) m[i][j] = 2 * n[i] * n[j] - (i == j ? 1.0 : 0.0);
    return m;
  }
  const Vec3 u = (1.0 / s) * k;
  return AxisRotation(u, std::atan2(s, cosine));
}

void RemoveAtom(BuiltStructure& b, int atom) {
  const int i = atom - 1;
  b.z.erase(b.z.begin() + i);
  b.xyz.erase(b.xyz.begin() + i);
  b.bonds.erase(b.bonds.begin() + i);
  for (auto& list : b.bonds) {
    std::erase(list, atom);
    for (int& n : list)
      if (n > atom) --n;
  }
}

// Directions in which the first atom of a record can take its new bond,
// best first: away from its partners (at the tetrahedral angle from a single
// partner), then the other directions of the sphere that stay clear of them.
std::vector<Vec3> ValenceDirections(const FragmentRecord& r) {
  const FragmentAtom& head = r.atoms.front();
  std::vector<Vec3> partners;
  for (int n : head.bonds)  // a partner on top of the atom gives no direction
    if (Norm(r.atoms[n - 1].xyz - head.xyz) > 1e-6) partners.push_back(Normalised(r.atoms[n - 1].xyz - head.xyz));
  // Points spread evenly over the sphere (golden-angle spiral).
  constexpr int Points = 300;
  struct Scored {
    double score;
    Vec3 d;
  };
  std::vector<Scored> all;
  for (int k = 0; k < Points; ++k) {
    const double zc = 1.0 - (2.0 * k + 1.0) / Points, rho = std::sqrt(1.0 - zc * zc);
    const double phi = k * 2.399963229728653;
    const Vec3 d{rho * std::cos(phi), rho * std::sin(phi), zc};
    double score = 0.0;
    if (partners.size() == 1) {
      score = -std::abs(std::acos(std::clamp(Dot(d, partners[0]), -1.0, 1.0)) - 109.47 * constants::DegToRad);
    } else {
      score = 4.0;
      for (const Vec3& p : partners) score = std::min(score, std::acos(std::clamp(Dot(d, p), -1.0, 1.0)));
    }
    all.push_back({score, d});
  }
  std::stable_sort(all.begin(), all.end(), [](const Scored& a, const Scored& b) { return a.score > b.score; });
  std::vector<Vec3> out;
  const double floor = partners.size() == 1 ? -0.35 : all.front().score - 0.35;  // within 20 degrees
  for (const Scored& s : all)
    if (partners.empty() || s.score >= floor) out.push_back(s.d);
  return out;
}

}  // namespace

const ElementTable& ProgramElements() {
  static const ElementTable table{[](std::string_view label) { return ElementNumber(label); },
                                  [](int z) { return std::string(Trim(ElementSymbol(z))); },
                                  [](int z) { return DefaultMass(z); }};
  return table;
}

FragmentDatabase ReadFragmentDatabase(const std::string& path, const ElementTable& elements) {
  FragmentDatabase db;
  std::ifstream in(path);
  if (!in) return db;
  std::string line;
  int number = 0;
  FragmentRecord* open = nullptr;  // the record whose atom lines are being read
  std::vector<int> atomLines;      // file line of each of its atoms
  bool atomsEnded = true, bad = false;
  auto close = [&] {
    if (open != nullptr) {
      for (size_t k = 0; k < open->atoms.size(); ++k)
        for (int n : open->atoms[k].bonds)
          if (!bad && n > static_cast<int>(open->atoms.size())) {
            db.problems.push_back(path + " line " + std::to_string(atomLines[k]) + ": bond to atom " +
                                  std::to_string(n) + " past the end of the record; record skipped");
            bad = true;
          }
      if (bad) db.records.pop_back();
    }
    open = nullptr;
    bad = false;
    atomLines.clear();
  };
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line[0] == '!') continue;
    if (!line.empty() && line[0] == '#') {
      close();
      FragmentRecord r;
      r.headerLine = number;
      for (std::string_view t : Tokens(std::string_view(line).substr(1))) {
        if (static_cast<int>(r.names.size()) == FragmentSynonyms) break;
        r.names.push_back(Cut(t.substr(0, 30)));
      }
      db.records.push_back(std::move(r));
      open = &db.records.back();
      atomsEnded = false;
      continue;
    }
    if (Blank(line)) {
      atomsEnded = true;
      continue;
    }
    if (open == nullptr || atomsEnded || bad) continue;
    const auto t = Tokens(line);
    std::string why;
    FragmentAtom a;
    a.z = t.empty() ? 0 : elements.numberOfLabel(t[0]);
    if (t.size() < 4) {
      why = "fewer than three coordinates";
    } else if (a.z <= 0) {
      why = "no element in the label \"" + std::string(t[0]) + "\"";
    } else {
      for (int k = 0; k < 3 && why.empty(); ++k) {
        const auto x = ParseFortranReal(t[k + 1]);
        if (!x || !std::isfinite(*x) || std::abs(*x) > 1e6) why = "coordinate \"" + std::string(t[k + 1]) + "\" is no number";
        else a.xyz[k] = *x;
      }
      for (size_t k = 4; k < t.size() && why.empty(); ++k) {
        const auto n = ParseFortranInt(t[k]);
        if (!n || *n < 0 || *n > std::numeric_limits<int>::max()) why = "bond \"" + std::string(t[k]) + "\" is no atom number";
        else if (*n == static_cast<long long>(open->atoms.size()) + 1) why = "bond of the atom to itself";
        else if (*n > 0) a.bonds.push_back(static_cast<int>(*n));
      }
      if (why.empty() && static_cast<int>(a.bonds.size()) > MaxBonds) why = "more than 16 bonds";
    }
    if (!why.empty()) {
      db.problems.push_back(path + " line " + std::to_string(number) + ": " + why + "; record skipped");
      bad = true;
      continue;
    }
    open->atoms.push_back(std::move(a));
    atomLines.push_back(number);
  }
  close();
  return db;
}

std::vector<const FragmentRecord*> FindFragments(const FragmentDatabase& db, std::string_view name) {
  const std::string wanted = Upper(Trim(Cut(Trim(name))));
  std::vector<const FragmentRecord*> found;
  if (wanted.empty()) return found;
  for (const FragmentRecord& r : db.records)
    for (const std::string& n : r.names)
      if (Upper(n) == wanted) {
        found.push_back(&r);
        break;
      }
  return found;
}

int AddFragmentAt(BuiltStructure& b, const FragmentDatabase& db, std::string_view name, const Vec3& pointAngstrom,
                  const ElementTable& elements) {
  const Vec3 point = constants::AngstromToBohr * pointAngstrom;
  if (const int z = ElementNamed(Cut(Trim(name)), elements); z > 0) {
    b.z.push_back(z);
    b.xyz.push_back(point);
    b.bonds.emplace_back();
    return 1;
  }
  int added = 0;
  for (const FragmentRecord* r : FindFragments(db, name))
    if (!r->atoms.empty()) added += AppendRecord(b, *r, point);
  return added;
}

int ReplaceHydrogen(BuiltStructure& b, int hAtom, const FragmentDatabase& db, std::string_view name,
                    const ElementTable& elements) {
  if (hAtom < 1 || hAtom > b.Atoms() || b.z[hAtom - 1] != 1 || b.bonds[hAtom - 1].size() != 1) return -1;
  FragmentRecord single;
  const FragmentRecord* r = nullptr;
  if (const int z = ElementNamed(Cut(Trim(name)), elements); z > 0) {
    single.atoms.push_back(FragmentAtom{z, {0, 0, 0}, {}});
    r = &single;
  } else {
    for (const FragmentRecord* f : FindFragments(db, name))
      if (!f->atoms.empty()) {
        r = f;
        break;
      }
  }
  if (r == nullptr) return 0;

  const BuiltStructure before = b;
  int host = b.bonds[hAtom - 1].front();
  const Vec3 hostXyz = b.xyz[host - 1];
  const Vec3 out = Normalised(b.xyz[hAtom - 1] - hostXyz);
  RemoveAtom(b, hAtom);
  if (host > hAtom) --host;

  // The first atom on the old X-H line; the free valence of the record turned
  // onto the way back to X.
  const double length = BondRadius(b.z[host - 1]) + BondRadius(r->atoms.front().z);
  const Vec3 anchor = hostXyz + (length * constants::AngstromToBohr) * out;
  const Vec3 head = r->atoms.front().xyz;

  // The valence direction of the record onto the way back to X, then a turn
  // about the new bond in steps of 10 degrees: the first placement whose
  // nearest contact with the old atoms reaches 2.5 A, else the one whose
  // nearest contact is farthest.
  constexpr double Clear = 2.5 * constants::AngstromToBohr;
  double bestDistance = -1.0;
  std::vector<Vec3> best;
  for (const Vec3& valence : ValenceDirections(*r)) {
    const Mat3 align = RotationOnto(valence, -1.0 * out);
    std::vector<Vec3> local;
    for (const FragmentAtom& a : r->atoms) local.push_back(align * (constants::AngstromToBohr * (a.xyz - head)));
    for (int step = 0; step < 36; ++step) {
      const Mat3 turn = AxisRotation(out, step * 10.0 * constants::DegToRad);
      std::vector<Vec3> trial;
      double closest = std::numeric_limits<double>::max();
      for (size_t k = 0; k < local.size() && closest > bestDistance; ++k) {
        trial.push_back(anchor + turn * local[k]);
        for (int i = 0; i < b.Atoms(); ++i)
          if (!(k == 0 && i == host - 1)) closest = std::min(closest, Norm(trial.back() - b.xyz[i]));
      }
      if (closest > bestDistance + 1e-9 && trial.size() == local.size())
        bestDistance = closest, best = std::move(trial);
    }
    if (bestDistance >= Clear) break;
  }

  if (best.size() != r->atoms.size()) {  // no placement at all (atoms on top of each other)
    b = before;
    return 0;
  }
  const int old = b.Atoms();
  for (size_t k = 0; k < r->atoms.size(); ++k) {
    b.z.push_back(r->atoms[k].z);
    b.xyz.push_back(best[k]);
    std::vector<int> partners;
    for (int n : r->atoms[k].bonds) partners.push_back(n + old);
    b.bonds.push_back(std::move(partners));
  }
  b.bonds[old].insert(b.bonds[old].begin(), host);
  b.bonds[host - 1].push_back(old + 1);
  std::sort(b.bonds[host - 1].begin(), b.bonds[host - 1].end());
  return static_cast<int>(r->atoms.size());
}

std::string FragmentBlock(const BuiltStructure& b, const std::vector<int>& fragment, const std::vector<int>& marked,
                          std::string_view names, std::string_view comment, std::time_t when,
                          const ElementTable& elements) {
  std::vector<int> order;
  for (int m : marked)
    if (std::find(fragment.begin(), fragment.end(), m) != fragment.end() &&
        std::find(order.begin(), order.end(), m) == order.end())
      order.push_back(m);
  std::vector<int> rest = fragment;
  std::sort(rest.begin(), rest.end());
  for (int a : rest)
    if (std::find(order.begin(), order.end(), a) == order.end()) order.push_back(a);
  if (order.empty()) return {};

  std::tm t{};
  localtime_r(&when, &t);
  char date[40];
  std::strftime(date, sizeof date, "%d.%m.%Y  %H:%M:%S", &t);
  std::string out = "\n! " + std::string(comment) + "\n! -- " + date + " --\n";
  std::string header = "#";
  for (std::string_view n : Tokens(names)) {
    header += ' ';
    header += n;
  }
  out += header + "\n";

  std::vector<int> newNumber(b.Atoms() + 1, 0);
  for (size_t k = 0; k < order.size(); ++k) newNumber[order[k]] = static_cast<int>(k) + 1;
  for (size_t k = 0; k < order.size(); ++k) {
    const int a = order[k];
    std::string line = FmtA(elements.symbol(b.z[a - 1]) + std::to_string(k + 1), 6);
    for (int c = 0; c < 3; ++c) line += FmtF(b.xyz[a - 1][c] * constants::BohrToAngstrom, 12, 6);
    int written = 0;
    for (int n : b.bonds[a - 1]) {
      if (written == MaxBonds) break;
      line += FmtI(newNumber[n], 4);
      ++written;
    }
    for (; written < MaxBonds; ++written) line += FmtI(0, 4);
    out += line + "\n";
  }
  return out;
}

bool AppendFragmentBlock(const std::string& path, std::string_view block, std::string& error) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = "Cannot open " + path + ": " + std::strerror(errno);
    return false;
  }
  if (::flock(fd, LOCK_EX) != 0) {
    error = "Cannot lock " + path + ": " + std::strerror(errno);
    ::close(fd);
    return false;
  }
  // Everything there, to find the end of the last line that is not empty.
  std::string text;
  char chunk[65536];
  for (ssize_t got; (got = ::pread(fd, chunk, sizeof chunk, static_cast<off_t>(text.size()))) > 0;)
    text.append(chunk, static_cast<size_t>(got));
  size_t keep = text.size();
  while (keep > 0 && (text[keep - 1] == '\n' || text[keep - 1] == ' ' || text[keep - 1] == '\r')) --keep;
  if (keep > 0) keep = std::min(text.size(), text.find('\n', keep) == std::string::npos ? text.size()
                                                                                       : text.find('\n', keep) + 1);
  std::string tail;
  if (keep > 0 && text[keep - 1] != '\n') tail = "\n";  // a last line without its end
  tail += block;

  bool ok = true;
  size_t done = 0;
  while (done < tail.size()) {
    const ssize_t put = ::pwrite(fd, tail.data() + done, tail.size() - done, static_cast<off_t>(keep + done));
    if (put <= 0) {
      ok = false;
      break;
    }
    done += static_cast<size_t>(put);
  }
  if (ok && ::ftruncate(fd, static_cast<off_t>(keep + tail.size())) != 0) ok = false;
  if (ok && ::fsync(fd) != 0) ok = false;
  if (!ok) {
    error = "Cannot write " + path + ": " + std::strerror(errno);
    // No partial record: back to what was there.
    if (::ftruncate(fd, static_cast<off_t>(keep)) != 0 ||
        ::pwrite(fd, text.data() + keep, text.size() - keep, static_cast<off_t>(keep)) < 0) {
      // The file keeps its records; only trailing empty lines may be gone.
    }
  }
  ::flock(fd, LOCK_UN);
  ::close(fd);
  return ok;
}

BuiltStructure StructureOnShow(const Session& s, const ViewerState& v) {
  BuiltStructure b;
  b.z.assign(s.atomicNumber.begin(), s.atomicNumber.begin() + s.nAtoms);
  b.xyz.assign(s.xyz.begin(), s.xyz.begin() + s.nAtoms);
  b.bonds = v.bonds;
  b.bonds.resize(s.nAtoms);
  return b;
}

void TakeStructure(Session& s, ViewerState& v, const BuiltStructure& b, const ElementTable& elements) {
  const int n = b.Atoms();
  s.nAtoms = n;
  s.atomicNumber = b.z;
  s.xyz = b.xyz;
  s.atomName.resize(n);
  s.atomMass.resize(n);
  s.molMass = 0.0;
  s.elementCount.fill(0);
  v.symbols.resize(n);
  for (int i = 0; i < n; ++i) {
    v.symbols[i] = elements.symbol(b.z[i]);
    s.atomName[i] = v.symbols[i] + std::to_string(i + 1);
    s.atomMass[i] = elements.mass(b.z[i]);
    s.molMass += s.atomMass[i];
    if (b.z[i] >= 0 && b.z[i] < ElementKinds) ++s.elementCount[b.z[i]];
  }
  v.bonds = b.bonds;
  v.screen.resize(n);
  std::erase_if(v.marked, [n](int m) { return m > n; });
  v.structureEdited = true;
  v.atomCountChanged = 1;
}

std::vector<int> ConnectedAtoms(const BuiltStructure& b, int first) {
  std::vector<int> seen(b.Atoms() + 1, 0), out, stack{first};
  if (first < 1 || first > b.Atoms()) return out;
  seen[first] = 1;
  while (!stack.empty()) {
    const int a = stack.back();
    stack.pop_back();
    out.push_back(a);
    for (int n : b.bonds[a - 1])
      if (n >= 1 && n <= b.Atoms() && !seen[n]) seen[n] = 1, stack.push_back(n);
  }
  std::sort(out.begin(), out.end());
  return out;
}

namespace {

std::string DatabasePath(const Session& s) {
  return s.files.fragmentDb.empty() ? s.files.homeDir + "Quintor.fdb" : s.files.fragmentDb;
}

void ReportOnce(ViewerState& v, const std::vector<std::string>& problems) {
  for (const std::string& p : problems)
    if (std::find(v.messages.begin(), v.messages.end(), " " + p) == v.messages.end()) v.messages.push_back(" " + p);
}

}  // namespace

int AddFragmentCommand(Session& s, ViewerState& v, Prompts& prompts) {
  if (v.elements == nullptr) return 0;
  const ElementTable& elements = *v.elements;
  const FragmentDatabase db = ReadFragmentDatabase(DatabasePath(s), elements);
  ReportOnce(v, db.problems);

  const DialogSpec& spec = DialogNumber(110);
  DialogValues values = Presets(spec);
  Vec3 point{};
  for (;;) {
    if (prompts.AskDialog(110, values) != DialogOk) return 0;
    const auto bad = FirstBadNumber(spec, values);
    if (!bad) break;
    values[spec.captionId] = bad->caption;
  }
  point = {*FieldNumber(values, 1000), *FieldNumber(values, 1006), *FieldNumber(values, 1043)};
  const std::string name = Cut(Trim(values[1013]));

  BuiltStructure b = StructureOnShow(s, v);
  int added = 0;
  const bool oneHydrogen = v.marked.size() == 1 && b.z[v.marked.front() - 1] == 1;
  if (oneHydrogen) added = ReplaceHydrogen(b, v.marked.front(), db, name, elements);
  if (!oneHydrogen || added < 0) added = AddFragmentAt(b, db, name, point, elements);
  if (b.Atoms() > MaxAtoms) {
    prompts.ShowMessage(" Too many atoms: at most " + std::to_string(MaxAtoms));
    return 0;
  }
  if (oneHydrogen && added > 0) v.marked.clear();
  TakeStructure(s, v, b, elements);
  return std::max(added, 0);
}

bool StoreFragmentCommand(Session& s, ViewerState& v, Prompts& prompts) {
  if (v.elements == nullptr || s.nAtoms == 0) return false;
  const BuiltStructure b = StructureOnShow(s, v);
  // The fragment of the Edit mode when one is marked, else the piece of the
  // first marked atom.
  std::vector<int> fragment;
  for (size_t i = 0; i < v.fragmentMark.size() && i < static_cast<size_t>(s.nAtoms); ++i)
    if (v.fragmentMark[i] == 1) fragment.push_back(static_cast<int>(i) + 1);
  if (fragment.empty() && !v.marked.empty()) fragment = ConnectedAtoms(b, v.marked.front());
  if (fragment.empty()) return false;
  DialogValues values = Presets(DialogNumber(111));
  if (prompts.AskDialog(111, values) != DialogOk) return false;
  const std::string block =
      FragmentBlock(b, fragment, v.marked, values[1013], values[1000], std::time(nullptr), *v.elements);
  std::string error;
  if (!AppendFragmentBlock(DatabasePath(s), block, error)) {
    prompts.ShowMessage(error);
    return false;
  }
  return true;
}

}  // namespace quintor
