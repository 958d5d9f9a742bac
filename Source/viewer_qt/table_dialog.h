// The dialogs of the table (viewer/dialogs.h) as Qt widgets. Every numbered
// control carries the object name "c<number>" and every button "b<number>",
// so that the tests can find and walk them.
#pragma once

#include <map>

#include <QDialog>
#include <QString>

#include "viewer/dialogs.h"

class QLabel;

namespace quintor {

class TableDialog : public QDialog {
 public:
  TableDialog(const DialogSpec& spec, const DialogValues& values, QWidget* parent = nullptr);
  DialogValues Values() const;
  void SetCaption(const std::string& text);
  // The answers of dialogs opened from this one (dialog 116 from "ARIR setting"),
  // seeded from and returned in the values under NestedKey.
  std::map<int, DialogValues> nested;

 private:
  void Pressed(int id);
  const DialogSpec& spec_;
};

// Shows dialog `number` with `values` until its numbers read (a field with a
// repeat caption brings the dialog back with that caption); returns the code
// of the closing button and leaves the fields in `values`.
int RunTableDialog(int number, DialogValues& values, QWidget* parent);

// The file chooser's filter of "Browse..." in dialog 112, in Qt's form.
QString InputFileFilter();

}  // namespace quintor
