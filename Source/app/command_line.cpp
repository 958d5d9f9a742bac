#include "app/command_line.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <exception>
#include <filesystem>

#include <fmt/format.h>

#include "io/fortran_io.h"
#include "io/keyword_values.h"
#include "io/words.h"

namespace quintor {

namespace {

// Option words in the order they are tested. Since each is a prefix test the
// order matters: /ROTNUM before /ROT, /ARIR and /AU before /A, /CFOUR before
// /C, /V@ before /V, and /PREC takes /PRECAU and /PRECNM along. /CSV@ and
// /CHARGE are tested before /C as /CFOUR is.
enum class Opt {
  X, NXYZ, NDXYZ, DNXYZ, TT, PP, ROTNUM, ROT, ORIENT, TS, AU, BOHR, NM, PREC, ARIR, A,
  GAM4, GAM5, GAM7, GAMUS, G94, G98, G03, G09, PRIR, CFOUR, GZ, GXYZ, PAT, HB, FX, RX, FP, C,
  SPEC, THERMO, VIEWFILE, VIEW, SCALE, SYMEPS, NOSYM, NOLOG, NOE, RAMAN, NOGRAPHICS, MULT, IRMC, JSON, CSV, SNAP,
  CHARGE, ENGINE, HOF, GEOOPT, SCAN, MODE, DISTORT, SPECTRUM, PLAY, QS, QH, QT, CONC, SCALEAUTO, NROTPRODUCT, UHF, SAVE, ZMAT, BOLTZ,
  V0TORSION
};

struct OptionWord {
  std::string_view word;
  Opt opt;
};

constexpr auto kOptions = std::to_array<OptionWord>({
    {"/X", Opt::X},            {"/NXYZ", Opt::NXYZ},      {"/NDXYZ", Opt::NDXYZ},    {"/DNXYZ", Opt::DNXYZ},
    {"/TT", Opt::TT},          {"/PP", Opt::PP},          {"/ROTNUM", Opt::ROTNUM},  {"/ROT", Opt::ROT},
    {"/ORIENT", Opt::ORIENT},  {"/TS", Opt::TS},          {"/AU", Opt::AU},          {"/BOHR", Opt::BOHR},
    {"/NM", Opt::NM},          {"/PREC", Opt::PREC},      {"/ARIR", Opt::ARIR},      {"/A", Opt::A},
    {"/GAM4", Opt::GAM4},      {"/GAM5", Opt::GAM5},      {"/GAM7", Opt::GAM7},      {"/GAMUS", Opt::GAMUS},
    {"/G94", Opt::G94},        {"/G98", Opt::G98},        {"/G03", Opt::G03},        {"/G09", Opt::G09},
    {"/PRIR", Opt::PRIR},      {"/CFOUR", Opt::CFOUR},    {"/GZ", Opt::GZ},          {"/PAT", Opt::PAT},
    {"/HB", Opt::HB},          {"/FX", Opt::FX},          {"/RX", Opt::RX},          {"/FP", Opt::FP},
    {"/CSV@", Opt::CSV},       {"/JSON", Opt::JSON},      {"/CHARGE", Opt::CHARGE},  {"/CONC", Opt::CONC},
    {"/C", Opt::C},
    {"/V0TORSION", Opt::V0TORSION},  // before /V
    {"/@", Opt::SPEC},         {"/THERMO", Opt::THERMO},  {"/V@", Opt::VIEWFILE},    {"/V", Opt::VIEW},
    {"/SCALEAUTO", Opt::SCALEAUTO}, {"/SCALE", Opt::SCALE},    {"/SYMEPS", Opt::SYMEPS},  {"/NOSYM", Opt::NOSYM},    {"/NOLOG", Opt::NOLOG},
    {"/NOE", Opt::NOE},        {"/RAMAN", Opt::RAMAN},    {"/0", Opt::NOGRAPHICS},   {"/MULT", Opt::MULT},
    {"/IRMC", Opt::IRMC},      {"/SNAP@", Opt::SNAP},     {"/ENGINE", Opt::ENGINE},  {"/HOF", Opt::HOF},
    {"/GEOOPT", Opt::GEOOPT},  {"/SCAN", Opt::SCAN},      {"/GXYZ", Opt::GXYZ},
    {"/MODE", Opt::MODE},      {"/DISTORT", Opt::DISTORT}, {"/SPECTRUM@", Opt::SPECTRUM}, {"/PLAY@", Opt::PLAY},
    {"/QS", Opt::QS},          {"/QH", Opt::QH},          {"/QT", Opt::QT},
    {"/NROTPRODUCT", Opt::NROTPRODUCT},
    {"/UHF", Opt::UHF},        {"/BOLTZ", Opt::BOLTZ},
    {"/SAVE@", Opt::SAVE},     {"/ZMAT@", Opt::ZMAT},
});

// The methods of /ENGINE by name, with their menu numbers.
struct EngineMethodWord {
  std::string_view name;
  int menu;
};
constexpr std::array<EngineMethodWord, 5> kEngineMethods = {
    {{"MNDO", 1}, {"AM1", 2}, {"PM3", 3}, {"MNDOD", 4}, {"PM3D", 5}}};

std::string Cut(std::string_view s, size_t n) { return std::string(s.substr(0, std::min(s.size(), n))); }

// Reads numbers of option values free-form; an empty value leaves the default.
struct ValueReader {
  int argNo;
  std::string option;
  FieldPlace Place() const {
    return FieldPlace{"", 0, 0, 0, fmt::format("command-line argument {}, option {}", argNo, option)};
  }
  void Real(std::string_view text, double& target) const {
    if (auto v = ReadFreeReal(text, Place())) target = *v;
  }
  void Int(std::string_view text, int& target) const {
    if (auto v = ReadFreeInt(text, Place())) target = static_cast<int>(*v);
  }
};

// N[@label] of /NXYZ, /NDXYZ, /DNXYZ and /GZ. Returns true when a label was given.
bool SkipAndLabel(Session& s, std::string_view value, const ValueReader& r) {
  size_t at = value.find('@');
  if (at == std::string_view::npos) {
    r.Int(value, s.opt.skipLines);
    return false;
  }
  r.Int(value.substr(0, at), s.opt.skipLines);
  s.opt.label = Cut(CopyWord(value.substr(at + 1)), MaxLabel);
  return true;
}

// /GXYZ[order][:skip][@label] (our own; the file-format dialog's GXYZ for a
// batch run): the column template (letters N, X, Y, Z and any other for a
// column skipped), the lines skipped behind each label, and the label. Without
// "@" the dialog's label stands; "@" alone reads one block from the top.
void GxyzOption(Session& s, std::string_view value, const ValueReader& r) {
  InputPattern& p = s.pattern;
  const size_t at = value.find('@');
  const std::string_view head = value.substr(0, at);
  const size_t colon = head.find(':');
  const std::string order(Trim(head.substr(0, colon)));
  if (!order.empty()) {
    for (char c : std::string_view("XYZ"))
      if (order.find(c) == std::string::npos) throw FatalReadError(r.Place(), order);
    p.gxyzTemplate = order;
  }
  if (colon != std::string_view::npos) r.Int(head.substr(colon + 1), p.gxyzSkip);
  if (at != std::string_view::npos) p.gxyzLabel = Cut(Trim(value.substr(at + 1)), MaxLabel);
  s.opt.formatCode = FormatCode::Gxyz;
}

// Options that take no value: text behind them is a mistake (/TS400).
bool TakesNoValue(Opt opt) {
  switch (opt) {
    case Opt::TS: case Opt::AU: case Opt::BOHR: case Opt::NM: case Opt::ARIR: case Opt::A: case Opt::GAM4:
    case Opt::GAM5: case Opt::GAM7: case Opt::GAMUS: case Opt::G94: case Opt::G98: case Opt::G03: case Opt::G09:
    case Opt::PRIR: case Opt::CFOUR: case Opt::NOSYM: case Opt::NOLOG: case Opt::NOE: case Opt::RAMAN:
    case Opt::NOGRAPHICS: case Opt::JSON: case Opt::HOF: case Opt::GEOOPT: case Opt::SCAN: case Opt::UHF:
    case Opt::NROTPRODUCT: case Opt::SCALEAUTO: case Opt::BOLTZ: case Opt::V0TORSION:
      return true;
    default:
      return false;
  }
}

size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t up = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = up;
    }
  }
  return row[b.size()];
}

// The known option nearest to a mistyped one, by the letters before its
// value: /T400 gives /TT, --foo gives /FP.
std::string_view NearestOption(std::string_view upper) {
  while (!upper.empty() && (upper.front() == '/' || upper.front() == '-')) upper.remove_prefix(1);
  size_t end = 0;
  while (end < upper.size() && (std::isalpha(static_cast<unsigned char>(upper[end])) ||
                                (end > 0 && std::isdigit(static_cast<unsigned char>(upper[end])) &&
                                 !std::isalpha(static_cast<unsigned char>(upper[end - 1])))))
    ++end;
  if (end == 0 && !upper.empty()) end = 1;
  const std::string_view key = upper.substr(0, end);
  // An option that begins with the letters typed comes first (/T400: /TT).
  if (!key.empty())
    for (const auto& o : kOptions)
      if (o.word.substr(1).rfind(key, 0) == 0) return o.word;
  std::string_view best = "/I";
  size_t bestDistance = EditDistance(key, "I");
  for (const auto& o : kOptions) {
    std::string_view word = o.word.substr(1);
    if (!word.empty() && word.back() == '@') word.remove_suffix(1);
    const size_t d = EditDistance(key, word);
    if (d < bestDistance) best = o.word, bestDistance = d;
  }
  return best;
}

std::string UnknownOption(std::string_view arg, int argNo, std::string_view upper) {
  return fmt::format(" ERROR! Unknown option {} (argument {}); the nearest known option is {}", arg, argNo,
                     NearestOption(upper));
}

void RequirePositive(double v, const ValueReader& r, std::string_view what) {
  if (std::isfinite(v) && v > 0.0) return;
  throw BadOption(fmt::format(" ERROR! Option {} (argument {}) needs {}", r.option, r.argNo, what));
}

// Whether two names lead to the same file (also one not yet made).
bool SameFile(const std::string& a, const std::string& b) {
  namespace fs = std::filesystem;
  std::error_code ec1, ec2;
  if (fs::exists(a, ec1) && fs::exists(b, ec2)) return fs::equivalent(a, b, ec1);
  return fs::weakly_canonical(a, ec1) == fs::weakly_canonical(b, ec2) && !ec1 && !ec2;
}

// /CSV@ and /SNAP@ never name the input: such an option is dropped, so
// that nothing is written over the input.
void RefuseOutputOverInput(Options& o, const RunFiles& f, std::exception_ptr& first) {
  const std::string input(Trim(f.inputName));
  if (input.empty()) return;
  for (auto [option, name] : {std::pair<std::string_view, std::string*>{"/CSV@", &o.csvFile},
                              std::pair<std::string_view, std::string*>{"/SNAP@", &o.snapFile}}) {
    if (name->empty() || !SameFile(*name, input)) continue;
    if (!first)
      first = std::make_exception_ptr(BadOption(
          fmt::format(" ERROR! Option {}{} names the input file; the input is never written", option, *name)));
    name->clear();
  }
}

std::string Replace(std::string text, std::string_view from, char to) {
  for (char& c : text)
    if (from.find(c) != std::string_view::npos) c = to;
  return text;
}

// /MODE<n>[@file.xyz]: the mode number, and the film's file in its own case.
void ModeOption(Session& s, std::string_view value, std::string_view original, const ValueReader& r) {
  const size_t at = value.find('@');
  r.Int(value.substr(0, at), s.opt.showMode);
  if (at != std::string_view::npos) s.opt.filmFile = Cut(Trim(original.substr(at + 1)), MaxLine);
}

void ApplyOption(Session& s, Opt opt, std::string_view value, std::string_view original,
                 std::string_view fullArg, const ValueReader& r) {
  Options& o = s.opt;
  switch (opt) {
    case Opt::X:
      // Without N the two lines of an XYZ file (count and title) are skipped.
      o.formatCode = FormatCode::Nxyz;
      o.skipLines = 2;
      r.Int(value, o.skipLines);
      break;
    case Opt::NXYZ:
    case Opt::NDXYZ:
    case Opt::DNXYZ: {
      int style = opt == Opt::NXYZ ? 1 : opt == Opt::NDXYZ ? 2 : 3;
      if (SkipAndLabel(s, value, r)) {
        o.formatCode = FormatCode::LabelledXyz;
        o.labelFieldOrder = style;
      } else {
        o.formatCode = static_cast<FormatCode>(4 + style);  // Nxyz, Ndxyz, Dnxyz
      }
      break;
    }
    case Opt::TT:
      r.Real(value, o.temperature);
      RequirePositive(o.temperature, r, "a temperature in K above 0");
      break;
    case Opt::PP: {
      double atm = o.pressure / 101325.0;
      bool given = !FreeFormItems(value).empty();
      r.Real(value, atm);
      if (given) o.pressure = atm * 101325.0;
      RequirePositive(o.pressure, r, "a pressure in atm above 0");
      break;
    }
    case Opt::ROTNUM:
    case Opt::ROT: {
      int n = static_cast<int>(o.rotationNumber);
      r.Int(value, n);
      o.rotationNumber = n;
      o.rotationNumberByUser = true;
      break;
    }
    case Opt::ORIENT: {
      o.orient = true;
      if (Trim(value).empty()) break;
      const std::string list = Replace(std::string(value), "-:", ' ');
      auto words = FreeFormItems(list);
      for (size_t k = 0; k < words.size() && k < 3; ++k) r.Int(words[k], o.orientAtoms[k]);
      break;
    }
    case Opt::TS: o.transitionState = true; break;
    case Opt::AU:
    case Opt::BOHR: o.lengthUnit = LengthUnit::Bohr; break;
    case Opt::NM: o.lengthUnit = LengthUnit::Nanometre; break;
    case Opt::PREC: {
      // /PREC, /PRECAU and /PRECNM: the value is looked at only when the
      // argument is long enough to hold one.
      int mode = 1;
      size_t minLength = 6;
      if (value.rfind("AU", 0) == 0) mode = 2, minLength = 8, value.remove_prefix(2);
      else if (value.rfind("NM", 0) == 0) mode = 3, minLength = 8, value.remove_prefix(2);
      o.outputPrecision = mode;
      if (fullArg.size() < minLength) break;
      size_t sep = value.rfind('-');
      if (sep == std::string_view::npos) sep = value.rfind('.');
      if (sep == std::string_view::npos) {
        r.Int(value, o.outputWidth);
      } else {
        r.Int(value.substr(0, sep), o.outputWidth);
        r.Int(value.substr(sep + 1), o.outputDecimals);
      }
      break;
    }
    case Opt::ARIR: o.arir = true; break;
    case Opt::NROTPRODUCT: o.nrotProduct = true; break;
    case Opt::V0TORSION: o.barrierOfTorsion = true; break;
    case Opt::BOLTZ: break;  // the ensemble run has read it
    case Opt::A: o.formatCode = FormatCode::Korvandel; break;
    case Opt::GAM4: o.formatCode = FormatCode::PcGamess4; break;
    case Opt::GAM5: o.formatCode = FormatCode::Gamess; break;
    case Opt::GAM7: o.formatCode = FormatCode::PcGamess7; break;
    case Opt::GAMUS: o.formatCode = FormatCode::GamessUS; break;
    case Opt::G94: o.formatCode = FormatCode::Gaussian94; break;
    case Opt::G98: o.formatCode = FormatCode::Gaussian98; break;
    case Opt::G03: o.formatCode = FormatCode::Gaussian03; break;
    case Opt::G09: o.formatCode = FormatCode::Gaussian09; break;
    case Opt::PRIR: o.formatCode = FormatCode::Priroda; break;
    case Opt::CFOUR: o.formatCode = FormatCode::Cfour; break;
    case Opt::GZ:
      o.formatCode = FormatCode::GaussianZMatrix;
      if (SkipAndLabel(s, value, r)) o.labelFieldOrder = 3;
      break;
    case Opt::GXYZ: GxyzOption(s, value, r); break;
    case Opt::PAT:
      o.formatCode = FormatCode::Pattern;
      o.patternName = Cut(Trim(value), MaxLabel);
      break;
    case Opt::HB:
      o.showHBonds = true;
      r.Real(value, o.hBondLength);
      break;
    case Opt::FX: r.Real(value, o.freqBottom); break;
    case Opt::RX: r.Real(value, o.redMassTop); break;
    case Opt::FP: r.Real(value, o.positiveFreqLimit); break;
    case Opt::C: r.Int(value, o.maxCycles); break;
    case Opt::SPEC:
      s.files.specName = Cut(Trim(original), MaxLine);
      o.specNameExplicit = true;
      break;
    case Opt::THERMO: {
      o.tempTableRequested = true;
      std::string wrapped = "T=(" + Replace(Cut(value, 80), "-:", ',') + ")";
      auto values = KeywordValues(wrapped, "T=");
      for (size_t k = 0; k < values.size() && k < 3; ++k) r.Real(values[k], o.tempRange[k]);
      for (double t : o.tempRange) RequirePositive(t, r, "temperatures and a step above 0");
      break;
    }
    case Opt::VIEWFILE: o.viewFile = Cut(Trim(original), MaxLine); break;
    case Opt::VIEW: {
      // Only ":" separates here, so that negative angles keep their "-".
      std::string wrapped = "V=(" + Replace(Cut(value, 80), ":", ',') + ")";
      auto values = KeywordValues(wrapped, "V=");
      o.viewGiven = true;
      o.viewValues = static_cast<int>(std::min<size_t>(values.size(), 6));
      for (int k = 0; k < o.viewValues; ++k) r.Real(values[k], o.view[k]);
      break;
    }
    case Opt::SCALEAUTO: o.scaleAuto = true; break;
    case Opt::SCALE:
      o.freqScaleByUser = true;
      r.Real(value, o.freqScale);
      if (o.freqScale <= 0.0) o.freqScale = 1.0;
      break;
    case Opt::SYMEPS:
      r.Real(value, o.symEps);
      if (o.symEps <= 0.0) o.symEps = 0.005;
      break;
    case Opt::NOSYM: o.noSymmetry = true; break;
    case Opt::NOLOG: o.noLog = true; break;
    case Opt::NOE: o.noEnergies = true; break;
    case Opt::RAMAN: o.raman = true; break;
    case Opt::NOGRAPHICS: o.noGraphics = true; break;
    case Opt::MULT:
      r.Int(value, o.multiplicity);
      if (!FreeFormItems(value).empty() && o.multiplicity <= 0) o.multiplicity = 1;
      break;
    case Opt::JSON: o.json = true; break;
    case Opt::CSV: o.csvFile = Cut(Trim(original), MaxLine); break;
    case Opt::SNAP: o.snapFile = Cut(Trim(original), MaxLine); break;
    case Opt::CHARGE: r.Int(value, o.charge); break;
    case Opt::ENGINE: {
      // A whole-word match: an unknown name stops the run as a bad number does.
      const std::string_view name = Trim(value);
      if (name.empty()) break;
      const auto* m = std::find_if(kEngineMethods.begin(), kEngineMethods.end(),
                                   [&](const EngineMethodWord& w) { return w.name == name; });
      if (m == kEngineMethods.end()) throw FatalReadError(r.Place(), name);
      o.engineMethod = m->menu;
      break;
    }
    case Opt::HOF: o.engineHeat = true; break;
    case Opt::GEOOPT: o.engineGeoOpt = true; break;
    case Opt::UHF: o.engineUnrestricted = true; break;
    case Opt::SCAN: o.engineScan = true; break;
    case Opt::MODE: ModeOption(s, value, original, r); break;
    case Opt::DISTORT: {
      const size_t eq = value.find('=');
      r.Int(value.substr(0, eq), o.distortMode);
      if (eq != std::string_view::npos) r.Real(value.substr(eq + 1), o.distortAmplitude);
      break;
    }
    case Opt::SPECTRUM: o.spectrumFile = Cut(Trim(original), MaxLine); break;
    case Opt::PLAY: o.playFile = Cut(Trim(original), MaxLine); break;
    case Opt::QS:
    case Opt::QT:
      o.quasiEntropy = opt == Opt::QS ? QuasiEntropy::Grimme : QuasiEntropy::Truhlar;
      r.Real(value, o.quasiEntropyCutoff);
      if (o.quasiEntropyCutoff <= 0.0) o.quasiEntropyCutoff = 100.0;
      break;
    case Opt::QH:
      o.quasiEnthalpy = true;
      r.Real(value, o.quasiEnthalpyCutoff);
      if (o.quasiEnthalpyCutoff <= 0.0) o.quasiEnthalpyCutoff = 100.0;
      break;
    case Opt::CONC:
      o.concentration = 1.0;
      r.Real(value, o.concentration);
      if (o.concentration <= 0.0) o.concentration = 1.0;
      break;
    case Opt::SAVE: o.saveFile = Cut(Trim(original), MaxLine); break;
    case Opt::ZMAT: o.zmatFile = Cut(Trim(original), MaxLine); break;
    case Opt::IRMC: {
      o.monteCarlo = true;
      int n = 0;
      r.Int(value, n);
      o.monteCarloSamples = n > 0 ? n : 0;
      break;
    }
  }
}

void ParseArgument(Session& s, const std::string& arg, size_t k);

}  // namespace

CommandLineAction ParseCommandLine(Session& s, const std::vector<std::string>& args) {
  for (const auto& a : args) {
    if (a == "-h" || a == "--help" || a == "/?") return CommandLineAction::Help;
    if (a == "--version") return CommandLineAction::Version;
  }
  std::exception_ptr first;  // the first mistake, thrown once all arguments are read
  for (size_t k = 0; k < args.size(); ++k) {
    try {
      ParseArgument(s, args[k], k);
    } catch (const FatalReadError&) {
      if (!first) first = std::current_exception();
    } catch (const BadOption&) {
      if (!first) first = std::current_exception();
    }
  }
  RefuseOutputOverInput(s.opt, s.files, first);
  if (first) std::rethrow_exception(first);
  return CommandLineAction::Run;
}

namespace {

void ParseArgument(Session& s, const std::string& arg, size_t k) {
  {
    std::string original = Cut(arg, MaxLine);
    std::string up = Upper(original);
    std::string_view trimmed = Trim(up);
    if (trimmed == "/I") {
      s.opt.orientation = Orientation::Input;
      return;
    }
    if (trimmed == "/Z") {
      s.opt.orientation = Orientation::ZMatrix;
      return;
    }
    if (k == 0) {
      s.files.inputName = original;  // taken whole, in its own case
      return;
    }
    const int argNo = static_cast<int>(k + 1);
    for (const auto& o : kOptions) {
      if (up.rfind(o.word, 0) != 0) continue;
      std::string_view value = std::string_view(up).substr(o.word.size());
      std::string_view originalValue = std::string_view(original).substr(o.word.size());
      if (TakesNoValue(o.opt) && !Trim(value).empty()) throw BadOption(UnknownOption(Trim(original), argNo, trimmed));
      ValueReader r{argNo, std::string(o.word)};
      ApplyOption(s, o.opt, TrimRight(value), originalValue, TrimRight(up), r);
      return;
    }
    // A flag that is no option is a mistake (/T400, --foo); a plain word
    // behind the input stays ignored, as "prog /I file.log" needs.
    if (!trimmed.empty() && (trimmed.front() == '/' || trimmed.front() == '-'))
      throw BadOption(UnknownOption(Trim(original), argNo, trimmed));
  }
}

}  // namespace

bool OpensWindows(const std::vector<std::string>& args) {
  Session s;
  try {
    if (ParseCommandLine(s, args) != CommandLineAction::Run) return false;
  } catch (const std::exception&) {
    return false;
  }
  // A journal replays without windows; a spectrum picture needs the painter.
  const std::string& spectrum = s.opt.spectrumFile;
  const bool spectrumPng = spectrum.size() > 4 && Upper(spectrum.substr(spectrum.size() - 4)) == ".PNG";
  const bool replay = !s.opt.playFile.empty() || !s.opt.saveFile.empty() || !s.opt.zmatFile.empty();
  if (replay && s.opt.snapFile.empty() && !spectrumPng) return false;
  return !s.opt.noGraphics || !s.opt.snapFile.empty() || spectrumPng;
}

std::string UsageText() {
  return fmt::format(
      " {} (build number {})\n"
      " A program for molecular visualization, normal modes animation,\n"
      " and thermochemical properties evaluation.\n"
      "\n"
      " Usage: quintor <input file> [flags]\n"
      "\n"
      " Input format flags (by default the format is recognised automatically):\n"
      "   /x<N> - read the XYZ coordinates skipping N lines in the input file (default N=2)\n"
      "   /nxyz<N>[@label] - XYZ input, columns: symbol X Y Z; with @label read after each label\n"
      "   /ndxyz<N>[@label] - XYZ input, columns: symbol dummy X Y Z\n"
      "   /dnxyz<N>[@label] - XYZ input, columns: dummy symbol X Y Z\n"
      "   /gz<N>[@label] - Gaussian Z-matrix input\n"
      "   /pat<name> - read the input by the pattern <name> of the configuration file\n"
      "   /gxyz[order][:N][@label] - generalized XYZ: column order (default DNXYZ), N lines skipped\n"
      "       behind each label (default 2); without @ the label COORDINATES OF ALL ATOMS ARE,\n"
      "       @ alone one block from the top of the file\n"
      "   /g94, /g98, /g03, /g09 - Gaussian 94, 98, 03, 09 log\n"
      "   /gam4, /gam5, /gam7 - PC GAMESS v.4, GAMESS v.5 and 6, PC GAMESS v.7 log\n"
      "   /gamus - current GAMESS(US) log\n"
      "   /prir - Priroda log\n"
      "   /cfour - CFOUR log (recognised, not read)\n"
      "   /a - log of KORVANDEL\n"
      "   /i - use input orientation of a Gaussian log\n"
      "   /z - use Z-matrix orientation of a Gaussian log\n"
      "   /au, /bohr - coordinates are in bohr;  /nm - coordinates are in nanometres\n"
      "   /noe - do not read energies and gradients\n"
      "   /raman - read Raman activities instead of IR intensities\n"
      "   /c<N> - set maximum number of cycles (geometries) to N (defailt N=300)\n"
      "\n"
      " Thermochemistry flags:\n"
      "   /tt<T> - temperature, K (default 298.15)\n"
      "   /pp<P> - pressure, atm (default 1)\n"
      "   /rot<N>, /rotnum<N> - rotational symmetry number set by user\n"
      "   /ts - the structure is a transition state\n"
      "   /scale<S> - frequency scaling factor (default 1.0)\n"
      "   /scaleauto - scale factor (ZPE) from a table by the log's method and basis set;\n"
      "                /scale<S> stands over it\n"
      "   /fx<F> - bottom limit of frequencies used in evaluation, cm-1\n"
      "   /rx<M> - upper limit of reduced masses used in evaluation, amu\n"
      "   /fp<F> - negative frequencies above F are treated as positive\n"
      "   /thermo<first>-<last>-<step> - thermodynamic functions at requested temperatures\n"
      "   /mult<N> - spin multiplicity\n"
      "   /qs<C> - quasi-RRHO entropy (Grimme): modes below about C cm-1 (default 100) as free rotors\n"
      "   /qt<C> - quasi-RRHO entropy (Truhlar): frequencies below C cm-1 (default 100) raised to C\n"
      "   /qh<C> - quasi-RRHO enthalpy (Head-Gordon): modes below about C cm-1 (default 100) to RT/2\n"
      "   /conc<c> - standard state of c mol/L (default 1) instead of the pressure\n"
      "   /arir - automatic recognition of internal rotations\n"
      "   /nrotproduct - NRot of a recognised rotation is n1*n2 of its groups, as the earlier\n"
      "                  program had it, not the period lcm(n1,n2) of the potential\n"
      "   /v0torsion - a barrier from the frequency is one V0 from the curvature along the torsion\n"
      "                alone (the other torsions held), not from the rotation's own mode\n"
      "   /irmc<N> - internal rotations also by Monte Carlo with N samples (0: by the number of\n"
      "              rotations); report in <input>.mco; seeds 1802 9373 unless the SpecFile\n"
      "              says MCSEEDS=(<seed1>,<seed2>); the same seeds give the same results\n"
      "   /@<file> - thermodynamic specification file (default <input>.tdi)\n"
      "\n"
      " Analysis and view flags:\n"
      "   /symeps<E> - symmetry tolerance (default 0.005)\n"
      "   /nosym - no symmetry recognition, symmetry is C1\n"
      "   /orient<a>-<b>-<c> - re-orient: atom a to origin, b on OX axis, c in OXY plane\n"
      "   /hb<L> - show hydrogen bonds not longer than L, A (default 2.5)\n"
      "   /v<AX>:<AY>:<AZ>[:<ShiftX>:<ShiftY>:<Zoom>] - starting view\n"
      "   /v@<file> - read the starting view from a file\n"
      "   /prec<W>.<D>, /precau<W>.<D>, /precnm<W>.<D> - precise last-view coordinates in A, bohr, nm\n"
      "\n"
      " Run flags:\n"
      "   /0 - batch mode: no windows, read, report and evaluate unattended\n"
      "   /boltz - the input is a list of logs of one molecule (one a line): each is evaluated,\n"
      "            then Boltzmann weights by G, duplicates counted once, the ensemble G\n"
      "   /json - also write the results to <input>.json beside the MainLog\n"
      "   /csv@<file> - append one summary row of the run to <file> (header when new)\n"
      "   /nolog - do not keep the log file\n"
      "   /snap@<file.png> - draw the molecular view (last coordinate set, starting view, /v honoured)\n"
      "                      to a PNG picture of the view's size and end the run as /0 does;\n"
      "                      needs no display (Qt's offscreen platform)\n"
      "\n"
      " Semi-empirical engine flags (on the final geometry, after the report):\n"
      "   /engine<M> - method M: MNDO, AM1, PM3 (default), MNDOD, PM3D\n"
      "   /hof - heat of formation of the final geometry\n"
      "   /geoopt - optimise the final geometry (Cartesian coordinates)\n"
      "   /uhf - open shells by unrestricted Hartree-Fock (default: restricted half-electron)\n"
      "   /charge<N> - molecular charge (default 0); the multiplicity is /mult\n"
      "   /scan - with internal rotations (/arir or the specification file): each rotation's\n"
      "           potential by the engine, 37 points of 10 degrees, in place of other barriers\n"
      "\n"
      " Normal mode flags (batch, with /0):\n"
      "   /mode<n>@<file.xyz> - the film of mode n (30 frames of a period, A) as a multi-frame XYZ file\n"
      "   /mode<n> - with /snap@: draw the displacement arrows of mode n\n"
      "   /distort<n>[=<A>] - the two geometries distorted by A (default 0.1) A along mode n, to the log\n"
      "   /spectrum@<file> - the IR spectrum (Raman under /raman), Lorentzian FWHM 10 cm-1, to\n"
      "                      <file>.csv (wavenumber,intensity) or to a <file>.png picture\n"
      "   /play@<journal> - replay a journal of the interactive stage offscreen (every interactive\n"
      "                     run writes <input>.jnl), then end as the interactive work ends\n"
      "   -h, --help, /? - this text;  --version - version and build number\n",
      VersionText, BuildNumber);
}

}  // namespace quintor
