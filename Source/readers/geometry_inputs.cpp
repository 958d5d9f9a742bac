// Readers of coordinate lists: plain XYZ, XYZ at a label, pattern input, GXYZ.
// Each takes over the file from the read pass and reads it to its end (or to
// the end of its one block). Lengths are stored in bohr.
#include <algorithm>
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

bool StartsWithDigit(std::string_view w) {
  return !w.empty() && std::isdigit(static_cast<unsigned char>(w.front()));
}

bool IsBlankLine(std::string_view line) { return Trim(line).empty(); }

// The end of a block of XYZ rows.
bool EndsXyzBlock(std::string_view line) {
  return IsBlankLine(line) || Contains(Upper(line), "$END") || Contains(line, "....") ||
         Contains(line, "----");
}

// Nuclear number of an atom word: a number up to its first "." when it
// starts with a digit ("6", "6.0"), else its letters before the first digit
// looked up in the element table ("H12" is hydrogen). A word outside the
// table gets 0: an atom without mass or symbol.
int AtomWordNumber(std::string_view word, const LineReader& in) {
  if (StartsWithDigit(word)) {
    std::string_view digits = word.substr(0, word.find('.'));
    std::optional<long long> z = ParseFortranInt(digits);
    if (!z) throw FatalReadError(PlaceIn(in, "atomic number"), word);
    return static_cast<int>(*z);
  }
  return ElementNumber(word, 99);
}

double Coordinate(std::string_view word, const LineReader& in, const char* field) {
  std::optional<double> v = ParseFortranReal(word);
  if (!v) throw FatalReadError(PlaceIn(in, field), word);
  return *v;
}

struct XyzRow {
  std::string word;  // the atom word as written
  int z = 0;
  Vec3 v{};          // in the input unit
};

// One row of style 1 (symbol X Y Z), 2 (symbol dummy X Y Z) or
// 3 (dummy symbol X Y Z).
XyzRow ParseXyzRow(std::string_view line, int style, const LineReader& in) {
  static constexpr int kPlaces[3][4] = {{0, 1, 2, 3}, {0, 2, 3, 4}, {1, 2, 3, 4}};
  const int* place = kPlaces[(style >= 1 && style <= 3 ? style : 1) - 1];
  std::vector<std::string> words = SplitWords(line, 5);
  if (static_cast<int>(words.size()) <= place[3])
    throw FatalReadError(PlaceIn(in, "coordinate row"), Trim(line));
  XyzRow row;
  row.word = words[place[0]];
  row.z = AtomWordNumber(row.word, in);
  row.v = {Coordinate(words[place[1]], in, "X coordinate"),
           Coordinate(words[place[2]], in, "Y coordinate"),
           Coordinate(words[place[3]], in, "Z coordinate")};
  return row;
}

Vec3 Scaled(const Vec3& v, double factor) { return {v[0] * factor, v[1] * factor, v[2] * factor}; }

// A labelled file gives its blocks as sets 1, 2, ...; the first one also
// stands as the starting sets 0 and -1.
void CopyFirstBlock(Session& s) {
  if (s.iCyc <= 0) return;
  CoordSet first = s.Set(1);
  s.Set(0) = first;
  s.Set(-1) = first;
  s.coordsFound = true;
}

// Skips n lines, writing each to the log; false when the file ended.
bool SkipAndEcho(Session& s, LineReader& in, int n) {
  std::string_view line;
  for (int i = 0; i < n; ++i) {
    if (!in.Next(line)) return false;
    s.log.Line(TrimRight(line));
  }
  return true;
}

}  // namespace

// ---- Plain XYZ: formats 5, 6, 7 ------------------------------------------------

void ReadPlainXyz(Session& s, LineReader& in) {
  const int style = static_cast<int>(s.opt.formatCode) - 4;  // Nxyz 1, Ndxyz 2, Dnxyz 3
  const double factor = LengthFactor(s.opt.lengthUnit);
  in.Rewind();
  in.Skip(s.opt.skipLines);
  s.log.Line(" XYZ file input requested");
  StatusMessage(s, " XYZ file input requested");
  // The one geometry of the file is the starting set -1; iCyc stays there.
  s.iCyc = -1;
  s.nAtoms = 0;
  std::string_view line;
  while (in.Next(line)) {
    if (EndsXyzBlock(line)) break;
    XyzRow row = ParseXyzRow(line, style, in);
    s.coordsFound = true;
    AddAtom(s, row.z, Scaled(row.v, factor));
  }
}

// ---- XYZ blocks at a label: format 11 ------------------------------------------

void ReadXyzAtLabel(Session& s, LineReader& in) {
  static constexpr const char* kStyleNames[3] = {" NXYZ", " NDXYZ", " DNXYZ"};
  const int style = s.opt.labelFieldOrder >= 1 && s.opt.labelFieldOrder <= 3 ? s.opt.labelFieldOrder : 1;
  const double factor = LengthFactor(s.opt.lengthUnit);
  const std::string label = Upper(Trim(s.opt.label));
  s.log.Line(FmtA(kStyleNames[style - 1], 7) + "input at label    :" + std::string(Trim(s.opt.label)));

  in.Rewind();
  s.iCyc = 0;  // counts the occurrences of the label
  std::string_view line;
  while (in.Next(line)) {
    if (label.empty() || !Contains(Upper(line), label)) continue;
    StartGeometry(s);
    s.log.Line(" Label:" + FmtA(label, 10) + " Occurence:" + FmtI(s.iCyc, 4));
    if (!SkipAndEcho(s, in, s.opt.skipLines)) break;
    while (in.Next(line)) {
      if (EndsXyzBlock(line)) break;
      XyzRow row = ParseXyzRow(line, style, in);
      Vec3 bohr = Scaled(row.v, factor);
      AddAtom(s, row.z, bohr);
      s.log.Line(FmtA(row.word, 5) + FmtI(row.z, 4) + FmtX(2) +
                 FmtF(bohr[0] * constants::BohrToAngstrom, 15, 8) +
                 FmtF(bohr[1] * constants::BohrToAngstrom, 15, 8) +
                 FmtF(bohr[2] * constants::BohrToAngstrom, 15, 8));
    }
    s.log.Line();
  }
  CopyFirstBlock(s);
}

// ---- Pattern input from the configuration file: format 8 -----------------------

namespace {

// The energy of a line that holds the anchor: columns first to last, read
// free-form. Without columns the text behind the anchor is read.
double PatternEnergy(std::string_view line, const InputPattern& p, std::string_view anchor,
                     const LineReader& in) {
  std::string_view text;
  FieldPlace where = PlaceIn(in, "energy");
  if (p.energyBegPos > 0) {
    size_t first = static_cast<size_t>(p.energyBegPos - 1);
    size_t last = p.energyEndPos >= p.energyBegPos ? static_cast<size_t>(p.energyEndPos) : line.size();
    if (first < line.size()) text = line.substr(first, std::min(last, line.size()) - first);
    where.firstCol = p.energyBegPos;
    where.lastCol = static_cast<int>(last);
  } else {
    text = line.substr(line.find(anchor) + anchor.size());
  }
  std::optional<double> e = ReadFreeReal(text, where);
  if (!e) throw FatalReadError(where, text);
  return *e;
}

}  // namespace

void ReadPatternInput(Session& s, LineReader& in) {
  const InputPattern& p = s.pattern;
  const double factor = LengthFactor(s.opt.lengthUnit);
  // The pattern's label and anchor are searched as written, case and all.
  const std::string label(Trim(p.geoLabel));
  const std::string anchor(Trim(p.energyPattern));
  const bool readEnergy = p.readEnergy > 0 && !anchor.empty();
  s.log.Line(" Input by label requested");
  StatusMessage(s, " Input by label requested");

  // An energy found before the label of a geometry, or among the lines
  // skipped behind it, goes to set iCyc plus the pattern's shift.
  auto lookForEnergy = [&](std::string_view line) {
    if (!readEnergy || !Contains(line, anchor)) return;
    double e = PatternEnergy(line, p, anchor, in);
    int slot = s.iCyc + p.energyShift;
    if (slot >= -1) s.Set(slot).energy = e;
  };

  in.Rewind();
  s.iCyc = 0;
  std::string_view line;
  while (in.Next(line)) {
    lookForEnergy(line);
    if (label.empty() || !Contains(line, label)) continue;
    StartGeometry(s);
    bool more = true;
    for (int i = 0; i < p.skipLinesAfterLabel && more; ++i) {
      more = in.Next(line);
      if (more) lookForEnergy(line);
    }
    if (!more) break;
    while (in.Next(line)) {
      if (IsBlankLine(line) || Contains(line, "---------")) break;
      if (p.geoFormat >= 1 && p.geoFormat <= 3) {
        XyzRow row = ParseXyzRow(line, p.geoFormat, in);
        AddAtom(s, row.z, Scaled(row.v, factor));
        continue;
      }
      // name, nuclear charge, X, Y, Z
      std::vector<std::string_view> items = FreeFormItems(line);
      if (items.size() < 5) throw FatalReadError(PlaceIn(in, "coordinate row"), Trim(line));
      double charge = Coordinate(items[1], in, "nuclear charge");
      Vec3 v{Coordinate(items[2], in, "X coordinate"), Coordinate(items[3], in, "Y coordinate"),
             Coordinate(items[4], in, "Z coordinate")};
      AddAtom(s, static_cast<int>(std::lround(charge)), Scaled(v, factor));
    }
  }
  CopyFirstBlock(s);
}

// ---- GXYZ, columns by a template: format 12 ------------------------------------

namespace {

struct GxyzLayout {
  std::string delimiters;  // besides blank and tab, at most 20
  int n = 0, x = 0, y = 0, z = 0;  // 1-based word places; 0 when not in the template
  int words = 0;                   // words needed by a row
};

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  for (char c : text)
    if (c != ' ') out.push_back(c);
  return out;
}

GxyzLayout PrepareGxyz(const InputPattern& p) {
  GxyzLayout g;
  std::string tmpl = Upper(WithoutBlanks(p.gxyzTemplate));
  g.delimiters = Upper(WithoutBlanks(p.gxyzDelimiters)).substr(0, 20);
  auto place = [&](char letter) {
    size_t k = tmpl.find(letter);
    return k == std::string::npos ? 0 : static_cast<int>(k) + 1;
  };
  g.n = place('N');
  g.x = place('X');
  g.y = place('Y');
  g.z = place('Z');
  g.words = std::max({g.n, g.x, g.y, g.z});
  return g;
}

bool EndsGxyzBlock(std::string_view line, const std::vector<std::string>& words) {
  if (EndsXyzBlock(line) || Contains(line, "EndOf")) return true;
  return !words.empty() && Upper(words.front()).rfind("END", 0) == 0;
}

}  // namespace

void ReadGxyz(Session& s, LineReader& in) {
  const InputPattern& p = s.pattern;
  const double factor = LengthFactor(s.opt.lengthUnit);
  s.log.Line(" GXYZ format        :" + std::string(Trim(p.gxyzTemplate)));
  const GxyzLayout g = PrepareGxyz(p);
  const std::string label = Upper(Trim(p.gxyzLabel));

  auto readBlock = [&]() {
    if (!SkipAndEcho(s, in, p.gxyzSkip)) return;
    std::string_view line;
    while (in.Next(line)) {
      std::string row(line);
      for (char& c : row)
        if (c == '\t' || g.delimiters.find(c) != std::string::npos) c = ' ';
      std::vector<std::string> words = SplitWords(row, 255, 30);
      if (EndsGxyzBlock(line, words)) break;
      if (static_cast<int>(words.size()) < g.words)
        throw FatalReadError(PlaceIn(in, "coordinate row"), Trim(line));
      auto word = [&](int place) -> std::string_view {
        return place > 0 ? std::string_view(words[place - 1]) : std::string_view("0");
      };
      int z = AtomWordNumber(word(g.n), in);
      Vec3 v{Coordinate(word(g.x), in, "X coordinate"), Coordinate(word(g.y), in, "Y coordinate"),
             Coordinate(word(g.z), in, "Z coordinate")};
      AddAtom(s, z, Scaled(v, factor));
    }
  };

  in.Rewind();
  s.iCyc = 0;
  if (label.empty()) {
    // One block, from the top of the file.
    StartGeometry(s);
    s.log.Line(" GXYZ coordinates " + FmtI(s.iCyc, 4));
    readBlock();
  } else {
    std::string_view line;
    while (in.Next(line)) {
      if (!Contains(Upper(line), label)) continue;
      StartGeometry(s);
      s.log.Line(" Label:" + FmtA(label, 25) + " Occurence:" + FmtI(s.iCyc, 4));
      readBlock();
    }
  }
  CopyFirstBlock(s);
}

}  // namespace quintor
