#include "viewer/dialogs.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "io/fortran_io.h"

namespace quintor {

namespace {

using K = ControlKind;

DialogControl Edit(int id, std::string_view label, std::string_view preset = {}, std::string_view format = {},
                   std::string_view invalid = {}) {
  return {K::Edit, id, label, preset, format, invalid, 0};
}
DialogControl ReadOnly(int id, std::string_view label, std::string_view format = {}) {
  return {K::ReadOnly, id, label, {}, format, {}, 0};
}
DialogControl Text(std::string_view label) { return {K::Label, 0, label, {}, {}, {}, 0}; }
DialogControl Caption(int id, std::string_view label) { return {K::Caption, id, label, {}, {}, {}, 0}; }
DialogControl Group(std::string_view label) { return {K::Group, 0, label, {}, {}, {}, 0}; }
DialogControl Check(int id, std::string_view label, bool on = false) {
  return {K::Check, id, label, on ? "1" : "0", {}, {}, 0};
}
DialogControl Radio(int id, std::string_view label, int group, bool on = false) {
  return {K::Radio, id, label, on ? "1" : "0", {}, {}, group};
}
DialogControl Button(int id, std::string_view label) { return {K::Button, id, label, {}, {}, {}, 0}; }

// Dialogs 107-109 differ in their labels only.
DialogSpec ZMatrixDialog(int number, std::string_view mode, std::vector<std::string_view> atoms,
                         std::vector<std::pair<int, std::string_view>> numbers) {
  DialogSpec d{number, mode, 1004, {Caption(1004, "")}};
  const int atomIds[] = {1000, 1006, 1043, 1008};
  for (size_t k = 0; k < atoms.size(); ++k) d.controls.push_back(ReadOnly(atomIds[k], atoms[k], "5"));
  for (auto [id, label] : numbers) d.controls.push_back(Edit(id, label, {}, "10.4"));
  d.controls.push_back(Button(DialogOk, "OK"));
  d.controls.push_back(Button(DialogCancel, "Cancel"));
  return d;
}

std::vector<DialogSpec> MakeDialogs() {
  std::vector<DialogSpec> all;
  all.push_back({101, "Input new value", 1001,
                 {Caption(1001, ""), Edit(1000, ""), Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  all.push_back({103, "Confirmation", 1001, {Caption(1001, ""), Button(DialogNo, "No"), Button(DialogYes, "Yes")}});
  all.push_back({105, "Rotation of marked fragment arond the axis A->B", 1006,
                 {Caption(1006, "Atom numbers, distance, and rotation angle"),
                  ReadOnly(1000, "Atom A (in the fixed - non-marked - fragment)", "5"),
                  ReadOnly(1002, "Atom B (in the moving - marked - fragment)", "5"),
                  Edit(1003, "Distance A-B, Angstroem", {}, "10.4"),
                  Text("(do not change or set to zero to remain distance intact)"),
                  Edit(1007, "Rotation Angle, degrees", {}, "10.2", "Atom numbers, distance, and rotation angle"),
                  Text("(subject of right-hand screw rule relatively A->B axis)"), Button(DialogOk, "OK"),
                  Button(DialogCancel, "Cancel")}});
  all.push_back({106, "Program message", 0, {Caption(1004, ""), Button(DialogOk, "OK")}});
  const std::string_view x = "Atom X (in marked - moving - fragment)", y = "Atom Y (in marked - moving - fragment)",
                         z = "Atom Z (in marked - moving - fragment)", a = "Atom A (in non-marked - fixed - fragment)",
                         b = "Atom B (in non-marked - fixed - fragment)",
                         c = "Atom C (in non-marked - fixed - fragment)";
  all.push_back(ZMatrixDialog(107, "Reorientation of fragment in terms of Z-matrix (1x3 mode)", {x, a, b, c},
                              {{1012, "R (Bond length A-B), Angstroems:"},
                               {1013, "ALPHA (Valence angle X-A-B), deg:"},
                               {1014, "THETA (Dihedral angle X-A-B-C), deg:"}}));
  all.push_back(ZMatrixDialog(108, "Reorientation of fragment in terms of Z-matrix (2x2 mode)", {x, y, a, b},
                              {{1012, "ALPHA (Valence angle Y-X-A), deg:"},
                               {1013, "THETA (Dihedral angle Y-X-A-B), deg:"},
                               {1014, "R (Distance X-A), Angstroems:"}}));
  all.push_back(ZMatrixDialog(109, "Reorientation of fragment in terms of Z-matrix (3x1 mode)", {x, y, z, a},
                              {{1013, "THETA (Dihedral angle A-X-Y-Z), deg:"}}));
  all.push_back({110, "Adding atom or fragment", 1004,
                 {Caption(1004, "Input ELEMENT symbol or FRAGMENT name (up to 20 characters):"), Edit(1013, ""),
                  Text("Place new fragment to the point with cartesian coordinates:"),
                  Edit(1000, "X", "    0.0000", "10.4", "X value is invalid. Repeat input:"),
                  Edit(1006, "Y", "    0.0000", "10.4", "Y value is invalid. Repeat input:"),
                  Edit(1043, "Z", "    0.0000", "10.4", "Z value is invalid. Repeat input:"),
                  Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  all.push_back({111, "Saving selected fragment to Fragment Database", 0,
                 {Edit(1013, "Input unique name(s) of fragment (up to 5 synonyms separated by spaces):"),
                  Edit(1000, "Comment (not obligatory):"), Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  all.push_back(
      {112, "Set the input file name and job options", 1004,
       {Caption(1004, ""), Edit(1000, "Input file name with directory path:"), Button(1036, "Browse..."),
        Group("Input file format"), Radio(1041, "Automatic recognition", 1, true), Radio(1047, "G03", 1),
        Radio(1048, "G09", 1), Radio(1015, "Gaussian98", 1), Radio(1055, "Gaussian94", 1),
        Radio(1016, "GAMESS v.5, 6", 1), Radio(1017, "GAMESS v.7", 1), Radio(1018, "Korvandel v.1", 1),
        Radio(1019, "Quintor", 1), Radio(1020, "NXYZ", 1), Radio(1031, "NDXYZ", 1), Radio(1032, "DNXYZ", 1),
        Radio(1033, "Use Pattern named:", 1), Edit(1007, ""), Radio(1034, "Generalized XYZ (GXYZ)", 1),
        Radio(1035, "Gaussian Z-matrix", 1), Edit(1003, "Lines to skip", "    0", "5"),
        Group("Molecular orientation in Gaussian output"), Radio(1038, "Standard", 2, true),
        Radio(1042, "Input", 2), Radio(1037, "Z-matrix", 2), Group("Job options"),
        Check(1021, "Coordinates are in A.U."), Check(1022, "Do not create LOG file"),
        Check(1023, "Show H-bonds, length <"), Edit(1010, "", "       2.5", "10.5"),
        Edit(1009, "Max number of cycles", "  300", "5"), Check(1024, "Do not read energies"),
        Check(1025, "Do not read frequencies"), Group("GXYZ or Gaussian Z-matrix input format parameters"),
        Edit(1011, "Coordinate label:", "COORDINATES OF ALL ATOMS ARE"), Edit(1012, "Lines to skip:", "2", "5"),
        Edit(1013, "Order:", "DNXYZ"), Edit(1014, "Allowed delimiters:       SPACE + TAB +  ", ",;:"),
        Text("(Order and Delimiters fields are applicable only to GXYZ format)"), Button(DialogOk, "OK"),
        Button(DialogCancel, "Cancel")}});
  all.push_back({113, "About", 0,
                 {Caption(1004, "QUINTOR v. 2.5"), Caption(1037, "Quintor for Linux, C++20 edition"),
                  Caption(1005, "A program for the molecular geometry visualization,normal mode animation and "
                                "thermochemical properties evaluation."),
                  Caption(1006, "Linux edition: the Quintor developers"),
                  Caption(1007, "Built with Qt 6, Open Babel and xtb made the fragment stock"),
                  Button(DialogOk, "OK")}});
  all.push_back({114, "Geometry optimization parameters", 0,
                 {Group("Quantum chemical method"), Radio(1051, "PM3", 1, true), Radio(1050, "AM1", 1),
                  Radio(1052, "MNDO", 1), Group("Molecular parameters"), Edit(1038, "Charge", "    0", "5"),
                  Edit(1039, "Multiplicity", "    0", "5"), Group("Optimization method"),
                  Radio(1053, "Gradient", 2, true), Radio(1044, "Gradientless", 2), Group("Stopping criteria"),
                  Edit(1045, "Max gradient norm", "   0.10000", "10.5"),
                  Edit(1046, "Max step size", "   0.00100", "10.5"), Edit(1048, "Step range", "   0.00010", "10.5"),
                  Edit(1049, "Max FCN calls", "   30", "5"), Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  all.push_back(
      {115, "Thermodynamic calculation parameters", 0,
       {Edit(1054, "Specification file for thermodynamic calculations (leave empty to use default parameters):"),
        Button(1067, "Browse..."), Edit(1055, "Hessian file name with directory path (leave empty if none):"),
        Button(1068, "Browse..."), Group("Parameters for TD calculations"),
        Edit(1056, "Temperature, K", "    298.15", "10.2"), Edit(1057, "Pressure, Pa", " 101325.00", "10.2"),
        Edit(1058, "Multiplicity of molecule", "    1", "5"), Edit(1059, "Rotation number", "    1", "5"),
        Edit(1060, "Scaling factor for freqs", "    1.0000", "10.4"),
        Edit(1061, "Bottom limit for freqs", "      0.00", "10.2"),
        Edit(1062, "Upper limit for red.masses", "        0.", "10.0"),
        Check(1066, "Calculate additional thermodynamics for temperature range, K:"),
        Edit(1063, "from", "    500.00", "10.2"), Edit(1064, "to", "   1500.00", "10.2"),
        Edit(1065, "step", "     50.00", "10.2"), Check(1038, "Use ARIR"),
        Caption(1071, "Automatic Recognition of Internal Rotations (ARIR) finds the internal rotations among the "
                      "normal modes and treats them as hindered rotors."),
        Button(1091, "ARIR setting"), Check(1042, "Use IRMC (Internal Rotations by Monte Carlo)"),
        Text("Calculate the thermodynamic contributions of internal rotations using the Monte Carlo approach"),
        Edit(1073, "Number of MC trials (set to zero for automatic choice)", "         0", "10"),
        Check(1041, "Exit program after TD calculations"), Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  all.push_back(
      {116, "ARIR setting", 0,
       {Edit(1073, "Threshold for recognition of internal rotation (0-10)", "    0.0050", "10.4"),
        Text("Decrease this value to improve sensitivity."),
        Text("(Warning! Too small value can result in wrong assignment with \"superfluous\" modes identified as "
             "rotations.)"),
        Group("Rotation coordinates generation"), Check(1082, "Generate rotation coordinates"),
        Edit(1075, "Rotation angle increment", "     20.00", "10.2"),
        Edit(1076, "Header file name (leave empty for default)"), Button(1090, "Browse..."),
        Group("Potential barrier height"), Radio(1084, "Estimate automatically", 1, true),
        Radio(1085, "Set exact value", 1), Radio(1086, "Estimate from harmonic frequency", 1),
        Edit(1077, "Potential barrier, kJ/mol", "      0.00", "10.2"), Edit(1078, "Rotational symmetry", "    1", "5"),
        Text("Warning! Usage of the same barrier and symmetry for all rotations can be incorrect. Use .TDI-file to "
             "indicate the separate values."),
        Group("Method of PES scanning"), Radio(1087, "PM3", 2, true), Radio(1088, "AM1", 2),
        Radio(1089, "MNDO", 2), Edit(1064, "Molecular charge", "    0", "5"), Edit(1065, "Multiplicity", "    0", "5"),
        Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  DialogSpec d117{117, "Z-matrix coordinates for selected atom", 0, {Button(1, "Save to disk"), Button(2, "Cancel")}};
  int own = OwnControlNumbers;
  const int rowIds[] = {1017, 1019, 1020};
  const std::string_view rowTitles[] = {"Z-matrix parameters in Gaussian style",
                                        "Z-matrix parameters in alternative Gaussian style (double bonded atom)",
                                        "Cartesian coordinates"};
  for (int row = 0; row < 3; ++row) {
    d117.controls.push_back(Radio(rowIds[row], rowTitles[row], 1, row == 0));
    const std::vector<std::string_view> labels =
        row == 2 ? std::vector<std::string_view>{"Atom X ", "X, A", "Y, A", "Z, A"}
                 : std::vector<std::string_view>{"Atom X ", row == 0 ? "R(X-A), A" : "R(X-B), deg:",
                                                 "Atom A", "X-A-B, deg:", "Atom B", "X-A-B-C, deg", "Atom C"};
    for (std::string_view l : labels)
      d117.controls.push_back(l.starts_with("Atom") ? ReadOnly(own++, l, "5") : Edit(own++, l, {}, "10.4"));
  }
  all.push_back(std::move(d117));
  all.push_back({118, "Dialog", 3999,
                 {Caption(3999, "Set view parameters:"),
                  Text("Rotation angles (rotation of molecular frame relatively to the laboratory frame), degrees:"),
                  Edit(1092, "AX", "    0.0000", "10.4", "Alp value is invalid. Repeat input."),
                  Edit(1093, "AY", "    0.0000", "10.4", "Bet value is invalid. Repeat input."),
                  Edit(1004, "AZ", "    0.0000", "10.4", "Gam value is invalid. Repeat input."),
                  Text("Shifts and zoom of molecular frame relatively to the laboratoty frame:"),
                  Edit(1005, "ShiftX", "    0.0000", "10.4", "ShiftX value is invalid. Repeat input:"),
                  Edit(1094, "ShiftY", "    0.0000", "10.4", "ShiftY value is invalid. Repeat input:"),
                  Edit(1007, "Zoom", "    1.0000", "10.4", "Zoom value is invalid. Repeat input:"),
                  Button(DialogOk, "OK"), Button(DialogCancel, "Cancel")}});
  return all;
}

bool Numeric(const DialogControl& c) {
  return (c.kind == K::Edit || c.kind == K::ReadOnly) && !c.format.empty();
}

std::string Flag(bool on) { return on ? "1" : "0"; }
bool On(const DialogValues& v, int id) {
  const auto it = v.find(id);
  return it != v.end() && it->second == "1";
}
std::string Text(const DialogValues& v, int id) {
  const auto it = v.find(id);
  return it == v.end() ? std::string() : std::string(Trim(it->second));
}

// Format radios of dialog 112 and the codes they set.
constexpr std::pair<int, FormatCode> FormatRadios[] = {
    {1041, FormatCode::Automatic}, {1047, FormatCode::Gaussian03},   {1048, FormatCode::Gaussian09},
    {1015, FormatCode::Gaussian98}, {1055, FormatCode::Gaussian94},  {1016, FormatCode::PcGamess4},
    {1017, FormatCode::PcGamess7},  {1018, FormatCode::Korvandel},   {1019, FormatCode::OwnLog},
    {1020, FormatCode::Nxyz},       {1031, FormatCode::Ndxyz},       {1032, FormatCode::Dnxyz},
    {1033, FormatCode::Pattern},    {1034, FormatCode::Gxyz},        {1035, FormatCode::GaussianZMatrix}};
constexpr std::pair<int, Orientation> OrientationRadios[] = {
    {1038, Orientation::Standard}, {1042, Orientation::Input}, {1037, Orientation::ZMatrix}};

}  // namespace

const DialogControl* DialogSpec::Find(int id) const {
  for (const DialogControl& c : controls)
    if (c.id == id && c.kind != K::Button) return &c;
  return nullptr;
}

std::span<const DialogSpec> Dialogs() {
  static const std::vector<DialogSpec> all = MakeDialogs();
  return all;
}

const DialogSpec& DialogNumber(int number) {
  for (const DialogSpec& d : Dialogs())
    if (d.number == number) return d;
  throw std::out_of_range("no dialog " + std::to_string(number));
}

DialogValues Presets(const DialogSpec& spec) {
  DialogValues v;
  for (const DialogControl& c : spec.controls)
    if (c.id != 0 && c.kind != K::Button && c.kind != K::Label && c.kind != K::Group) v[c.id] = std::string(c.preset);
  for (const DialogControl& c : spec.controls)
    if (c.kind == K::Caption) v[c.id] = std::string(c.label);
  return v;
}

std::string FieldText(const DialogControl& c, double value) {
  const auto dot = c.format.find('.');
  const int width = std::stoi(std::string(c.format.substr(0, dot)));
  if (dot == std::string_view::npos) return FmtI(static_cast<long long>(std::llround(value)), width);
  return FmtF(value, width, std::stoi(std::string(c.format.substr(dot + 1))));
}

std::optional<double> FieldNumber(const DialogValues& values, int id) {
  const std::string text = Text(values, id);
  if (text.empty()) return 0.0;  // a free-form read of an empty field leaves zero
  return ParseFortranReal(text);
}

std::optional<BadField> FirstBadNumber(const DialogSpec& spec, const DialogValues& values) {
  for (const DialogControl& c : spec.controls)
    if (Numeric(c) && c.kind == K::Edit && !FieldNumber(values, c.id))
      return BadField{c.id, std::string(c.invalid)};
  return std::nullopt;
}

std::string EncodeDialogAnswer(int result, const DialogValues& values) {
  std::string out = std::to_string(result);
  char sep = ' ';
  for (const auto& [id, text] : values) {
    out += sep;
    out += std::to_string(id) + "=" + text;
    sep = '\t';
  }
  return out;
}

int DecodeDialogAnswer(std::string_view line, DialogValues& values) {
  if (Trim(line).empty()) return DialogCancel;
  const size_t blank = line.find(' ');
  const auto code = ParseFortranInt(Trim(line.substr(0, blank)));
  if (!code) return DialogCancel;
  if (blank == std::string_view::npos) return static_cast<int>(*code);
  std::string_view rest = line.substr(blank + 1);
  while (!rest.empty()) {
    const size_t tab = rest.find('\t');
    const std::string_view item = rest.substr(0, tab);
    const size_t eq = item.find('=');
    if (eq != std::string_view::npos)
      if (const auto id = ParseFortranInt(item.substr(0, eq))) values[static_cast<int>(*id)] = item.substr(eq + 1);
    if (tab == std::string_view::npos) break;
    rest = rest.substr(tab + 1);
  }
  return static_cast<int>(*code);
}

DialogValues JobDialogValues(const Session& s) {
  const DialogSpec& d = DialogNumber(112);
  DialogValues v = Presets(d);
  v[1000] = s.files.inputName;
  for (auto [id, code] : FormatRadios) v[id] = Flag(code == s.opt.formatCode);
  for (auto [id, o] : OrientationRadios) v[id] = Flag(o == s.opt.orientation);
  v[1007] = s.opt.patternName;
  v[1021] = Flag(s.opt.lengthUnit == LengthUnit::Bohr);
  v[1022] = Flag(s.opt.noLog);
  v[1023] = Flag(s.opt.showHBonds);
  v[1010] = FieldText(*d.Find(1010), s.opt.hBondLength);
  v[1009] = FieldText(*d.Find(1009), s.opt.maxCycles);
  v[1024] = Flag(!s.opt.readEnergies);
  v[1025] = Flag(!s.opt.readFrequencies);
  v[1011] = s.pattern.gxyzLabel;
  v[1012] = FieldText(*d.Find(1012), s.pattern.gxyzSkip);
  v[1013] = s.pattern.gxyzTemplate;
  v[1014] = s.pattern.gxyzDelimiters;
  return v;
}

std::optional<std::string> ApplyJobDialog(const DialogValues& v, Session& s) {
  if (Text(v, 1000).empty())
    return std::string("ERROR! Input file name can not be empty! Repeat input or press Cancel to quit:");
  s.files.inputName = Text(v, 1000);
  for (auto [id, code] : FormatRadios)
    if (On(v, id)) s.opt.formatCode = code;  // none on: the code stays
  if (On(v, 1033)) s.opt.patternName = Text(v, 1007).substr(0, MaxLabel);
  for (auto [id, o] : OrientationRadios)
    if (On(v, id)) s.opt.orientation = o;
  s.opt.lengthUnit = On(v, 1021) ? LengthUnit::Bohr : LengthUnit::Angstrom;
  s.opt.showHBonds = On(v, 1023);
  if (auto x = FieldNumber(v, 1010)) s.opt.hBondLength = *x;
  if (auto x = FieldNumber(v, 1009)) s.opt.maxCycles = static_cast<int>(*x);
  s.opt.readEnergies = !On(v, 1024);
  s.opt.readFrequencies = !On(v, 1025);
  // "Lines to skip" (1003) goes into the same variable as 1012 and is then
  // overwritten by it: its value never reaches the reader. 1022 is read and
  // has no effect.
  int skip = static_cast<int>(FieldNumber(v, 1003).value_or(0));
  skip = static_cast<int>(FieldNumber(v, 1012).value_or(skip));
  s.pattern.gxyzLabel = Text(v, 1011).substr(0, MaxLabel);
  s.pattern.gxyzSkip = skip;
  s.pattern.gxyzTemplate = Text(v, 1013);
  s.pattern.gxyzDelimiters = Text(v, 1014);
  if (s.opt.formatCode == FormatCode::GaussianZMatrix && !s.pattern.gxyzLabel.empty())
    s.opt.label = s.pattern.gxyzLabel;
  return std::nullopt;
}

DialogValues ThermoDialogValues(const Session& s) {
  const DialogSpec& d = DialogNumber(115);
  DialogValues v = Presets(d);
  auto put = [&](int id, double x) { v[id] = FieldText(*d.Find(id), x); };
  v[1054] = s.files.specName;
  put(1056, s.opt.temperature);
  put(1057, s.opt.pressure);
  put(1058, s.opt.multiplicity > 0 ? s.opt.multiplicity : 1);
  put(1059, s.opt.rotationNumber);
  put(1060, s.opt.freqScale);
  put(1061, s.opt.freqBottom);
  put(1062, s.opt.redMassTop == NotGiven ? 0.0 : s.opt.redMassTop);
  v[1066] = Flag(s.opt.tempTableRequested);
  put(1063, s.opt.tempRange[0]);
  put(1064, s.opt.tempRange[1]);
  put(1065, s.opt.tempRange[2]);
  v[1038] = Flag(s.opt.arir);
  v[1042] = Flag(s.opt.monteCarlo);
  put(1073, s.opt.monteCarloSamples);
  PutNestedValues(v, 116, ArirDialogValues(s));
  return v;
}

bool ApplyThermoDialog(const DialogValues& v, Session& s, ThermoDialogFiles& files) {
  const DialogValues arir = NestedValues(v, 116);
  if (FirstBadNumber(DialogNumber(115), v) || FirstBadNumber(DialogNumber(116), arir)) return false;
  auto num = [&](int id) { return *FieldNumber(v, id); };
  files.specName = Text(v, 1054);
  files.hessianName = Text(v, 1055);
  files.exitAfter = On(v, 1041);
  s.opt.temperature = num(1056);
  s.opt.pressure = num(1057);
  // The 1 shown for a multiplicity not set leaves it not set (and warned of).
  if (const int m = static_cast<int>(num(1058)); !(s.opt.multiplicity <= 0 && m == 1)) s.opt.multiplicity = m;
  if (num(1059) != s.opt.rotationNumber) s.opt.rotationNumber = num(1059), s.opt.rotationNumberByUser = true;
  s.opt.freqScale = num(1060);
  s.opt.freqBottom = num(1061);
  if (num(1062) > 0) s.opt.redMassTop = num(1062);
  s.opt.tempTableRequested = On(v, 1066);
  s.opt.tempRange = {num(1063), num(1064), num(1065)};
  s.opt.arir = On(v, 1038);
  s.opt.monteCarlo = On(v, 1042);
  s.opt.monteCarloSamples = static_cast<int>(num(1073));
  if (!arir.empty()) ApplyArirDialog(arir, s);
  return true;
}

DialogValues NestedValues(const DialogValues& outer, int dialog) {
  DialogValues inner;
  for (auto it = outer.lower_bound(NestedKey(dialog, 0)); it != outer.end() && it->first < NestedKey(dialog + 1, 0);
       ++it)
    inner[it->first - NestedKey(dialog, 0)] = it->second;
  return inner;
}

void PutNestedValues(DialogValues& outer, int dialog, const DialogValues& inner) {
  for (const auto& [id, text] : inner) outer[NestedKey(dialog, id)] = text;
}

// The "Method of PES scanning" radios and the engine methods they choose.
constexpr std::pair<int, int> ScanMethodRadios[] = {{1087, 3}, {1088, 2}, {1089, 1}};

DialogValues ArirDialogValues(const Session& s) {
  const DialogSpec& d = DialogNumber(116);
  DialogValues v = Presets(d);
  auto put = [&](int id, double x) { v[id] = FieldText(*d.Find(id), x); };
  v[1082] = Flag(s.opt.genCoordAngle != 0.0);
  put(1075, s.opt.genCoordAngle < 0.01 ? 20.0 : s.opt.genCoordAngle);
  v[1076] = s.rotationPattern;
  const bool user = s.opt.userBarrier || s.opt.userNRot > 0;
  v[1084] = Flag(!user);
  v[1085] = Flag(user);
  v[1086] = Flag(false);
  put(1077, s.opt.userBarrier ? s.opt.userV0 : 0.0);
  put(1078, s.opt.userNRot > 0 ? s.opt.userNRot : 1);
  for (auto [id, method] : ScanMethodRadios) v[id] = Flag(method == s.opt.engineMethod);
  put(1064, s.opt.charge);
  return v;
}

bool ApplyArirDialog(const DialogValues& v, Session& s) {
  if (FirstBadNumber(DialogNumber(116), v)) return false;
  auto num = [&](int id) { return *FieldNumber(v, id); };
  if (On(v, 1082)) {
    s.opt.genCoordAngle = std::fabs(num(1075)) <= 0.001 ? 0.0 : num(1075);
    s.rotationPattern = Text(v, 1076);
  } else {
    s.opt.genCoordAngle = 0.0;
  }
  const bool user = On(v, 1085);
  s.opt.userBarrier = user;
  s.opt.userV0 = user ? num(1077) : 0.0;
  s.opt.userNRot = user ? std::max(0, static_cast<int>(num(1078))) : 0;
  for (auto [id, method] : ScanMethodRadios)
    if (On(v, id)) s.opt.engineMethod = method;
  s.opt.charge = static_cast<int>(num(1064));
  return true;
}

std::optional<GeoOptParameters> ReadGeoOptDialog(const DialogValues& v) {
  if (FirstBadNumber(DialogNumber(114), v)) return std::nullopt;  // the run ends
  GeoOptParameters p;
  p.method = On(v, 1050) ? 2 : On(v, 1052) ? 1 : 3;
  p.charge = static_cast<int>(*FieldNumber(v, 1038));
  p.multiplicity = static_cast<int>(*FieldNumber(v, 1039));
  p.optimiser = On(v, 1044) ? 2 : 1;
  p.maxGradientNorm = *FieldNumber(v, 1045);
  p.maxStep = *FieldNumber(v, 1046);
  p.stepRange = *FieldNumber(v, 1048);
  p.maxCalls = static_cast<int>(*FieldNumber(v, 1049));
  return p;
}

}  // namespace quintor
