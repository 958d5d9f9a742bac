// The modal dialogs of the program as tables of their controls: titles,
// labels, numbers, presets, number formats and the captions shown when a
// field does not read as a number. The window layer builds its dialogs from
// these tables, and the tests walk the same tables.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"

namespace quintor {

enum class ControlKind {
  Caption,   // a text the program may change (the repeat captions)
  Label,     // fixed text
  Group,     // a group box: the controls after it, up to the next group, stand in it
  Edit,
  ReadOnly,  // an edit the user cannot change
  Check,
  Radio,     // exclusive within its `radioGroup`
  Button,    // closes the dialog with its number as the result, or (Browse...) opens a chooser
};

// Numbers at and above this are ours: the resources give these controls none.
inline constexpr int OwnControlNumbers = 3000;

// Result codes.
inline constexpr int DialogOk = 1, DialogCancel = 2, DialogYes = 6, DialogNo = 7;

struct DialogControl {
  ControlKind kind = ControlKind::Label;
  int id = 0;                   // 0 for a text without a number
  std::string_view label;       // beside an edit, on a check, radio or button, or the text itself
  std::string_view preset;      // as first shown; "1" for a check or radio that starts on
  std::string_view format;      // "10.4" real, "5" integer, empty for text
  std::string_view invalid;     // the caption when the field is no number; empty: the run ends
  int radioGroup = 0;
};

struct DialogSpec {
  int number = 0;
  std::string_view title;
  int captionId = 0;            // the control that takes a repeat caption
  std::vector<DialogControl> controls;

  const DialogControl* Find(int id) const;
};

std::span<const DialogSpec> Dialogs();
const DialogSpec& DialogNumber(int number);  // throws std::out_of_range for an unknown number

// The text of each numbered control: edits as typed, checks and radios
// "1" or "0".
using DialogValues = std::map<int, std::string>;

DialogValues Presets(const DialogSpec& spec);

// A value in the field's format (10.4 → "    1.2500", 5 → "   12").
std::string FieldText(const DialogControl& c, double value);

// The first numeric field that does not read as a number, in table order.
struct BadField {
  int id = 0;
  std::string caption;  // the repeat caption; empty when the run ends instead
};
std::optional<BadField> FirstBadNumber(const DialogSpec& spec, const DialogValues& values);

// Reads a numeric field (free-form); nullopt for a field that is no number.
std::optional<double> FieldNumber(const DialogValues& values, int id);

// A dialog's answer on one line of the journal: the result code, then
// <id>=<text> for every value, separated by tabs. Decoding sets the values
// it finds and returns the code (Cancel for an empty or unreadable line).
std::string EncodeDialogAnswer(int result, const DialogValues& values);
int DecodeDialogAnswer(std::string_view line, DialogValues& values);

// Dialog 112, "Set the input file name and job options": the Session's
// options into the fields, and the fields back. With an empty input name
// ApplyJobDialog returns the caption to show and changes nothing.
DialogValues JobDialogValues(const Session& s);
std::optional<std::string> ApplyJobDialog(const DialogValues& values, Session& s);

// Dialog 115, "Thermodynamic calculation parameters", the same way; the
// specification and Hessian names go to `specName` and `hessianName`.
struct ThermoDialogFiles {
  std::string specName, hessianName;
  bool exitAfter = false;
};
DialogValues ThermoDialogValues(const Session& s);
bool ApplyThermoDialog(const DialogValues& values, Session& s, ThermoDialogFiles& files);

// Dialog 116, "ARIR setting", opened from dialog 115 by "ARIR setting":
// its answers travel in dialog 115's values under NestedKey(116, id), since
// the numbers of the two overlap. ThermoDialogValues puts them there and
// ApplyThermoDialog applies them with the rest.
constexpr int NestedKey(int dialog, int id) { return dialog * 10000 + id; }
DialogValues NestedValues(const DialogValues& outer, int dialog);  // empty when there are none
void PutNestedValues(DialogValues& outer, int dialog, const DialogValues& inner);
// "Set exact value" gives every rotation the barrier 1077 (in force above
// 1e-6 kJ/mol) and the symmetry number 1078; the other two radios leave each
// rotation its own. The rotation-coordinate fields count only with 1082 on.
DialogValues ArirDialogValues(const Session& s);
bool ApplyArirDialog(const DialogValues& values, Session& s);  // false, changing nothing, on a bad number

// Dialog 114, "Geometry optimization parameters".
struct GeoOptParameters {
  int method = 3;          // 1 MNDO, 2 AM1, 3 PM3
  int charge = 0, multiplicity = 0;
  int optimiser = 1;       // 1 gradient, 2 gradientless
  double maxGradientNorm = 0.1, maxStep = 0.001, stepRange = 0.0001;
  int maxCalls = 30;
};
std::optional<GeoOptParameters> ReadGeoOptDialog(const DialogValues& values);

}  // namespace quintor
