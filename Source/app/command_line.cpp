#include "app/command_line.h"

#include <algorithm>
#include <array>

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
  GAM4, GAM5, GAM7, GAMUS, G94, G98, G03, G09, PRIR, CFOUR, GZ, PAT, HB, FX, RX, FP, C,
  SPEC, THERMO, VIEWFILE, VIEW, SCALE, SYMEPS, NOSYM, NOLOG, NOE, RAMAN, NOGRAPHICS, MULT, IRMC, JSON, CSV, SNAP,
  CHARGE, ENGINE, HOF, GEOOPT, SCAN, MODE, DISTORT, SPECTRUM, PLAY, SAVE, ZMAT
};

struct OptionWord {
  std::string_view word;
  Opt opt;
};

constexpr std::array<OptionWord, 60> kOptions = {{
    {"/X", Opt::X},            {"/NXYZ", Opt::NXYZ},      {"/NDXYZ", Opt::NDXYZ},    {"/DNXYZ", Opt::DNXYZ},
    {"/TT", Opt::TT},          {"/PP", Opt::PP},          {"/ROTNUM", Opt::ROTNUM},  {"/ROT", Opt::ROT},
    {"/ORIENT", Opt::ORIENT},  {"/TS", Opt::TS},          {"/AU", Opt::AU},          {"/BOHR", Opt::BOHR},
    {"/NM", Opt::NM},          {"/PREC", Opt::PREC},      {"/ARIR", Opt::ARIR},      {"/A", Opt::A},
    {"/GAM4", Opt::GAM4},      {"/GAM5", Opt::GAM5},      {"/GAM7", Opt::GAM7},      {"/GAMUS", Opt::GAMUS},
    {"/G94", Opt::G94},        {"/G98", Opt::G98},        {"/G03", Opt::G03},        {"/G09", Opt::G09},
    {"/PRIR", Opt::PRIR},      {"/CFOUR", Opt::CFOUR},    {"/GZ", Opt::GZ},          {"/PAT", Opt::PAT},
    {"/HB", Opt::HB},          {"/FX", Opt::FX},          {"/RX", Opt::RX},          {"/FP", Opt::FP},
    {"/CSV@", Opt::CSV},       {"/JSON", Opt::JSON},      {"/CHARGE", Opt::CHARGE},  {"/C", Opt::C},
    {"/@", Opt::SPEC},         {"/THERMO", Opt::THERMO},  {"/V@", Opt::VIEWFILE},    {"/V", Opt::VIEW},
    {"/SCALE", Opt::SCALE},    {"/SYMEPS", Opt::SYMEPS},  {"/NOSYM", Opt::NOSYM},    {"/NOLOG", Opt::NOLOG},
    {"/NOE", Opt::NOE},        {"/RAMAN", Opt::RAMAN},    {"/0", Opt::NOGRAPHICS},   {"/MULT", Opt::MULT},
    {"/IRMC", Opt::IRMC},      {"/SNAP@", Opt::SNAP},     {"/ENGINE", Opt::ENGINE},  {"/HOF", Opt::HOF},
    {"/GEOOPT", Opt::GEOOPT},  {"/SCAN", Opt::SCAN},
    {"/MODE", Opt::MODE},      {"/DISTORT", Opt::DISTORT}, {"/SPECTRUM@", Opt::SPECTRUM}, {"/PLAY@", Opt::PLAY},
    {"/SAVE@", Opt::SAVE},     {"/ZMAT@", Opt::ZMAT},
}};

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
      o.formatCode = FormatCode::Nxyz;
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
    case Opt::TT: r.Real(value, o.temperature); break;
    case Opt::PP: {
      double atm = o.pressure / 101325.0;
      bool given = !FreeFormItems(value).empty();
      r.Real(value, atm);
      if (given) o.pressure = atm * 101325.0;
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
    case Opt::SCALE:
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

}  // namespace

CommandLineAction ParseCommandLine(Session& s, const std::vector<std::string>& args) {
  for (const auto& a : args) {
    if (a == "-h" || a == "--help" || a == "/?") return CommandLineAction::Help;
    if (a == "--version") return CommandLineAction::Version;
  }
  for (size_t k = 0; k < args.size(); ++k) {
    std::string original = Cut(args[k], MaxLine);
    std::string up = Upper(original);
    std::string_view trimmed = Trim(up);
    if (trimmed == "/I") {
      s.opt.orientation = Orientation::Input;
      continue;
    }
    if (trimmed == "/Z") {
      s.opt.orientation = Orientation::ZMatrix;
      continue;
    }
    if (k == 0) {
      s.files.inputName = original;  // taken whole, in its own case
      continue;
    }
    for (const auto& o : kOptions) {
      if (up.rfind(o.word, 0) != 0) continue;
      std::string_view value = std::string_view(up).substr(o.word.size());
      std::string_view originalValue = std::string_view(original).substr(o.word.size());
      ValueReader r{static_cast<int>(k + 1), std::string(o.word)};
      ApplyOption(s, o.opt, TrimRight(value), originalValue, TrimRight(up), r);
      break;
    }
  }
  return CommandLineAction::Run;
}

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
      "   /fx<F> - bottom limit of frequencies used in evaluation, cm-1\n"
      "   /rx<M> - upper limit of reduced masses used in evaluation, amu\n"
      "   /fp<F> - negative frequencies above F are treated as positive\n"
      "   /thermo<first>-<last>-<step> - thermodynamic functions at requested temperatures\n"
      "   /mult<N> - spin multiplicity\n"
      "   /arir - automatic recognition of internal rotations\n"
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
      "   /geoopt - optimise the final geometry (Cartesian, numerical gradients)\n"
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
