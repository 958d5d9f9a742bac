// The dialogs of the table: every control of every dialog built and read
// back, the texts kept as they are, the repeat captions, and the job
// dialog's fields into the Session's options.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSettings>
#include <QTextBrowser>
#include <QTimer>

#include "viewer_qt/qt_viewer.h"
#include "test_support.h"
#include "viewer/commands.h"
#include "viewer_qt/help.h"
#include "viewer_qt/table_dialog.h"
#include "viewer_qt/windows.h"

namespace quintor {
namespace {

class Dialogs : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { EnsureQtApplication(true); }
};

bool ShowsText(const QDialog& d, std::string_view text) {
  const QString t = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
  for (auto* l : d.findChildren<QLabel*>())
    if (l->text() == t) return true;
  for (auto* b : d.findChildren<QAbstractButton*>())
    if (b->text() == t) return true;
  for (auto* g : d.findChildren<QWidget*>())
    if (g->property("title").toString() == t) return true;
  return false;
}

TEST_F(Dialogs, EveryControlIsBuiltAndReadsBack) {
  for (const DialogSpec& spec : quintor::Dialogs()) {
    SCOPED_TRACE(spec.number);
    const DialogValues presets = Presets(spec);
    TableDialog d(spec, presets);
    EXPECT_EQ(d.windowTitle().toStdString(), spec.title);
    EXPECT_EQ(d.Values(), presets);
    DialogValues expected = presets;
    for (const DialogControl& c : spec.controls) {
      if (c.kind != ControlKind::Caption && !c.label.empty()) {
        EXPECT_TRUE(ShowsText(d, c.label)) << c.label;
      }
      const QString name = QString("c%1").arg(c.id);
      switch (c.kind) {
        case ControlKind::Edit:
        case ControlKind::ReadOnly: {
          auto* e = d.findChild<QLineEdit*>(name);
          ASSERT_NE(e, nullptr) << c.id;
          EXPECT_EQ(e->isReadOnly(), c.kind == ControlKind::ReadOnly);
          e->setText(c.format.empty() ? "some text" : "12.5");
          expected[c.id] = e->text().toStdString();
          break;
        }
        case ControlKind::Check: {
          auto* b = d.findChild<QCheckBox*>(name);
          ASSERT_NE(b, nullptr) << c.id;
          b->click();
          expected[c.id] = std::string(expected[c.id] == "1" ? "0" : "1");
          break;
        }
        case ControlKind::Radio: {
          auto* r = d.findChild<QRadioButton*>(name);
          ASSERT_NE(r, nullptr) << c.id;
          r->click();
          for (const DialogControl& o : spec.controls)
            if (o.kind == ControlKind::Radio && o.radioGroup == c.radioGroup) expected[o.id] = o.id == c.id ? "1" : "0";
          break;
        }
        case ControlKind::Button:
          EXPECT_NE(d.findChild<QAbstractButton*>(QString("b%1").arg(c.id)), nullptr) << c.id;
          break;
        default: break;
      }
      EXPECT_EQ(d.Values(), expected) << "after control " << c.id;
    }
  }
}

TEST_F(Dialogs, TextsStayAsTheProgramHasThem) {
  EXPECT_EQ(DialogNumber(105).title, "Rotation of marked fragment arond the axis A->B");
  EXPECT_EQ(DialogNumber(118).title, "Dialog");
  TableDialog d117(DialogNumber(117), Presets(DialogNumber(117)));
  EXPECT_TRUE(ShowsText(d117, "R(X-B), deg:"));  // over a length, as it was
  TableDialog d118(DialogNumber(118), Presets(DialogNumber(118)));
  EXPECT_TRUE(ShowsText(d118, "Shifts and zoom of molecular frame relatively to the laboratoty frame:"));
  TableDialog d105(DialogNumber(105), Presets(DialogNumber(105)));
  EXPECT_TRUE(ShowsText(d105, "Distance A-B, Angstroem"));
  EXPECT_EQ(Presets(DialogNumber(112)).at(1003), "    0");
  EXPECT_EQ(Presets(DialogNumber(112)).at(1010), "       2.5");
}

// A field that is no number brings the dialog back with its caption.
TEST_F(Dialogs, BadNumberBringsTheDialogBackWithItsCaption) {
  std::vector<std::string> captions;
  int shown = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* d = dynamic_cast<TableDialog*>(QApplication::activeModalWidget());
    if (d == nullptr) return;
    captions.push_back(d->findChild<QLabel*>("c1004")->text().toStdString());
    d->findChild<QLineEdit*>("c1006")->setText(++shown == 1 ? "one" : "1.5");
    d->findChild<QAbstractButton*>("b1")->click();
  });
  timer.start(10);
  DialogValues v = Presets(DialogNumber(110));
  EXPECT_EQ(RunTableDialog(110, v, nullptr), DialogOk);
  ASSERT_EQ(captions.size(), 2u);
  EXPECT_EQ(captions[0], "Input ELEMENT symbol or FRAGMENT name (up to 20 characters):");
  EXPECT_EQ(captions[1], "Y value is invalid. Repeat input:");
  EXPECT_EQ(*FieldNumber(v, 1006), 1.5);
  for (const auto& [id, caption] : std::vector<std::pair<int, std::string>>{
           {1092, "Alp value is invalid. Repeat input."}, {1094, "ShiftY value is invalid. Repeat input:"}}) {
    DialogValues w = Presets(DialogNumber(118));
    w[id] = std::string("x");
    EXPECT_EQ(FirstBadNumber(DialogNumber(118), w)->caption, caption);
  }
  DialogValues g = Presets(DialogNumber(114));
  g[1049] = "many";
  EXPECT_FALSE(ReadGeoOptDialog(g));  // no caption: the run ends
  EXPECT_EQ(ReadGeoOptDialog(Presets(DialogNumber(114)))->maxCalls, 30);
}

TEST(JobDialog, EachFormatRadioSetsItsCode) {
  const std::pair<int, FormatCode> table[] = {
      {1041, FormatCode::Automatic}, {1047, FormatCode::Gaussian03}, {1048, FormatCode::Gaussian09},
      {1015, FormatCode::Gaussian98}, {1055, FormatCode::Gaussian94}, {1016, FormatCode::PcGamess4},
      {1017, FormatCode::PcGamess7}, {1018, FormatCode::Korvandel}, {1019, FormatCode::OwnLog},
      {1020, FormatCode::Nxyz}, {1031, FormatCode::Ndxyz}, {1032, FormatCode::Dnxyz},
      {1033, FormatCode::Pattern}, {1034, FormatCode::Gxyz}, {1035, FormatCode::GaussianZMatrix}};
  for (auto [id, code] : table) {
    Session s;
    DialogValues v = JobDialogValues(s);
    for (auto [other, unused] : table) v[other] = std::string("0");
    v[id] = std::string("1");
    v[1000] = "water.log";
    EXPECT_FALSE(ApplyJobDialog(v, s));
    EXPECT_EQ(s.opt.formatCode, code) << id;
  }
  Session s;
  s.opt.formatCode = FormatCode::Gxyz;
  DialogValues v = JobDialogValues(s);
  v[1034] = std::string("0");  // no radio on: the code stays
  v[1000] = "x.xyz";
  v[1003] = std::string("9");  // read, then overwritten by "Lines to skip:"
  v[1012] = std::string("4");
  v[1042] = std::string("1"), v[1038] = std::string("0");
  v[1021] = std::string("1"), v[1023] = std::string("1"), v[1010] = "3.1", v[1009] = "12", v[1024] = std::string("1");
  ASSERT_FALSE(ApplyJobDialog(v, s));
  EXPECT_EQ(s.opt.formatCode, FormatCode::Gxyz);
  EXPECT_EQ(s.pattern.gxyzSkip, 4);
  EXPECT_EQ(s.opt.orientation, Orientation::Input);
  EXPECT_EQ(s.opt.lengthUnit, LengthUnit::Bohr);
  EXPECT_TRUE(s.opt.showHBonds);
  EXPECT_DOUBLE_EQ(s.opt.hBondLength, 3.1);
  EXPECT_EQ(s.opt.maxCycles, 12);
  EXPECT_FALSE(s.opt.readEnergies);
  EXPECT_TRUE(s.opt.readFrequencies);
  // The fields shown again are the ones set.
  DialogValues again = JobDialogValues(s);
  EXPECT_EQ(again[1010], "   3.10000");
  EXPECT_EQ(again[1042], "1");
  v[1000] = "  ";
  EXPECT_EQ(*ApplyJobDialog(v, s), "ERROR! Input file name can not be empty! Repeat input or press Cancel to quit:");
}

TEST(ThermoDialog, FieldsGoToTheOptions) {
  Session s;
  DialogValues v = ThermoDialogValues(s);
  EXPECT_EQ(v[1056], "    298.15");
  EXPECT_EQ(v[1057], " 101325.00");
  v[1056] = "400", v[1057] = "200000", v[1060] = "0.97", v[1038] = std::string("1"), v[1066] = std::string("1"), v[1041] = std::string("1");
  v[1054] = " my.tdi ";
  ThermoDialogFiles files;
  ASSERT_TRUE(ApplyThermoDialog(v, s, files));
  EXPECT_EQ(s.opt.temperature, 400);
  EXPECT_EQ(s.opt.pressure, 200000);
  EXPECT_EQ(s.opt.freqScale, 0.97);
  EXPECT_TRUE(s.opt.arir && s.opt.tempTableRequested && files.exitAfter);
  EXPECT_EQ(files.specName, "my.tdi");
  v[1057] = "high";
  EXPECT_FALSE(ApplyThermoDialog(v, s, files));
}

// "Set exact value" of "ARIR setting" gives all rotations one barrier and
// one NRot; its fields travel in dialog 115's values and in the journal.
TEST(ArirDialog, ExactValueSetsOneBarrierAndFoldForAll) {
  Session s;
  DialogValues v = ThermoDialogValues(s);
  const auto key = [](int id) { return NestedKey(116, id); };
  EXPECT_EQ(v[key(1084)], "1");
  EXPECT_EQ(v[key(1085)], "0");
  v[key(1084)] = "0", v[key(1085)] = "1", v[key(1077)] = "12.5", v[key(1078)] = "2";
  DialogValues back;
  ASSERT_EQ(DecodeDialogAnswer(EncodeDialogAnswer(DialogOk, v), back), DialogOk);
  ThermoDialogFiles files;
  ASSERT_TRUE(ApplyThermoDialog(back, s, files));
  EXPECT_TRUE(s.opt.userBarrier);
  EXPECT_EQ(s.opt.userV0, 12.5);
  EXPECT_EQ(s.opt.userNRot, 2);
  const DialogValues again = ThermoDialogValues(s);  // the presets are the values in force
  EXPECT_EQ(again.at(key(1085)), "1");
  EXPECT_EQ(again.at(key(1077)), "     12.50");
  EXPECT_EQ(again.at(key(1078)), "    2");
  v[key(1085)] = "0", v[key(1086)] = "1";  // from the frequency: each rotation its own again
  ASSERT_TRUE(ApplyThermoDialog(v, s, files));
  EXPECT_FALSE(s.opt.userBarrier);
  EXPECT_EQ(s.opt.userNRot, 0);
  v[key(1077)] = "high";
  EXPECT_FALSE(ApplyThermoDialog(v, s, files));
}

TEST_F(Dialogs, ArirSettingAnswersComeBackWithTheThermoDialog) {
  QTimer timer;
  bool opened = false;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* d = dynamic_cast<TableDialog*>(QApplication::activeModalWidget());
    if (d == nullptr) return;
    if (d->windowTitle() == "ARIR setting") {
      d->findChild<QRadioButton*>("c1085")->click();
      d->findChild<QLineEdit*>("c1077")->setText("9.5");
      d->findChild<QLineEdit*>("c1078")->setText("3");
      d->findChild<QAbstractButton*>("b1")->click();
    } else if (!opened) {
      opened = true;  // "ARIR setting" runs its own loop: the click must not wait for it here
      QTimer::singleShot(0, d->findChild<QAbstractButton*>("b1091"), &QAbstractButton::click);
    } else {
      d->findChild<QAbstractButton*>("b1")->click();
    }
  });
  timer.start(10);
  Session s;
  DialogValues v = ThermoDialogValues(s);
  EXPECT_EQ(RunTableDialog(115, v, nullptr), DialogOk);
  ThermoDialogFiles files;
  ASSERT_TRUE(ApplyThermoDialog(v, s, files));
  EXPECT_TRUE(s.opt.userBarrier);
  EXPECT_EQ(s.opt.userV0, 9.5);
  EXPECT_EQ(s.opt.userNRot, 3);
}

TEST(DialogJournal, AnswerLineRoundTrip) {
  DialogValues v{{1013, "tert butyl"}, {1000, "   1.0000"}, {1021, "1"}};
  const std::string line = EncodeDialogAnswer(DialogOk, v);
  DialogValues back;
  EXPECT_EQ(DecodeDialogAnswer(line, back), DialogOk);
  EXPECT_EQ(back, v);
  EXPECT_EQ(DecodeDialogAnswer("", back), DialogCancel);
}

// F1 opens the help window with the key table on show and the README's
// sections for users; the window keeps its size between runs.
TEST_F(Dialogs, HelpWindowAndRememberedLayout) {
  test::TempDir dir;
  QSettings::setDefaultFormat(QSettings::IniFormat);
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(dir.path.string()));
  Session s;
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  {
    ViewerWindow window(s, v);
    window.RememberLayout();
    window.Apply(DispatchKey(s, v, Extended(ext_key::F1), window.prompts()));
    auto* help = window.findChild<QTextBrowser*>("HelpWindow");
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isVisible());
    const QString text = help->toPlainText();
    EXPECT_TRUE(text.contains(QString::fromStdString(v.help.at(1)).trimmed()));
    EXPECT_TRUE(text.contains("The fragment database"));
    EXPECT_FALSE(text.contains("Robustness checks"));  // a section for developers
    window.resize(1001, 777);
    window.close();
  }
  ViewerWindow again(s, v);
  again.RememberLayout();
  EXPECT_EQ(again.size(), QSize(1001, 777));
}

// No input named: the job dialog until it has a name, its caption saying so.
TEST_F(Dialogs, JobDialogAtTheStartInsistsOnAName) {
  Session s;
  std::vector<std::string> captions;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    auto* d = dynamic_cast<TableDialog*>(QApplication::activeModalWidget());
    if (d == nullptr) return;
    captions.push_back(d->findChild<QLabel*>("c1004")->text().toStdString());
    d->findChild<QLineEdit*>("c1000")->setText(captions.size() == 1 ? "" : "water.log");
    d->findChild<QRadioButton*>("c1048")->click();
    d->findChild<QAbstractButton*>("b1")->click();
  });
  timer.start(10);
  ASSERT_TRUE(AskJobDialog(s));
  ASSERT_EQ(captions.size(), 2u);
  EXPECT_EQ(captions[1], "ERROR! Input file name can not be empty! Repeat input or press Cancel to quit:");
  EXPECT_EQ(s.files.inputName, "water.log");
  EXPECT_EQ(s.opt.formatCode, FormatCode::Gaussian09);
}

TEST(JobDialog, NoInputAndNoDisplayStopsWithStatus8) {
  std::vector<std::pair<std::string, std::string>> saved;
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    if (const char* value = std::getenv(name)) saved.emplace_back(name, value);
    unsetenv(name);
  }
  test::TempDir dir;
  const test::ExeResult r = test::RunExe({}, "", dir.path.string());
  for (const auto& [name, value] : saved) setenv(name.c_str(), value.c_str(), 1);
  EXPECT_EQ(r.status, 8) << r.output;
  EXPECT_NE(r.output.find(" ERROR! No display: use /0 for a batch run"), std::string::npos);
}

}  // namespace
}  // namespace quintor
