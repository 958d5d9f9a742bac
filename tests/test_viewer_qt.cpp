// The Qt windows on the offscreen platform: pixels of a painted frame, keys
// that move a ball where the view model says, the three panes, the key
// mapping and the prompt dialogs.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDockWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "viewer/commands.h"
#include "viewer/scene.h"
#include "viewer/view_model.h"
#include "viewer_qt/paint.h"
#include "viewer_qt/qt_viewer.h"
#include "viewer_qt/windows.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// C at the origin, O above it, H to the left: a ball of each colour; and
// an N alone, far off, that no stick crosses.
void Formaldehydeish(Session& s) {
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {0, 2.3, 0}}, {1, "H", {-2.0, 0, 0}}, {7, "N", {5, -5, 0}}});
}

struct Frame {
  Session s;
  ViewerState v;
  ScriptedPrompts prompts;
  Frame() {
    EnsureQtApplication(true);
    Formaldehydeish(s);
    v.window = {800, 800};  // 40 pixels a bohr
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
  }
  Rgb At(const QImage& image, double px, double py) const {
    const QColor c = image.pixelColor(static_cast<int>(px), static_cast<int>(py));
    return {c.red(), c.green(), c.blue()};
  }
  // The pixel of atom a's centre by the view model alone.
  Pixel Centre(int a) const {
    const Vec3 p = ScreenCoords(s.view, s.xyz[a - 1]);
    const double f = PerspectiveFactor(s.view, p[2]);
    return WorldToWindow(v.window, p[0] * f, p[1] * f);
  }
};

}  // namespace

TEST(ViewerQt, BackgroundAndBallColoursAtTheirCentres) {
  Frame f;
  const QImage image = RenderView(f.s, f.v);
  ASSERT_EQ(image.width(), 800);
  EXPECT_EQ(f.At(image, 790, 790), BackgroundColour);
  EXPECT_EQ(f.At(image, 10, 700), (Rgb{0, 0, 128}));
  struct Case {
    int atom;
    Rgb colour;
  };
  for (const Case& c : {Case{1, {0, 255, 255}}, Case{2, {255, 0, 0}}, Case{3, {255, 255, 255}}}) {
    const Pixel p = f.Centre(c.atom);
    EXPECT_EQ(f.At(image, p.x, p.y), c.colour) << c.atom;
  }
}

TEST(ViewerQt, ZoomAndTurnByKeysMoveTheBallWhereTheViewModelSays) {
  struct Case {
    std::vector<Key> keys;
  };
  const Case cases[] = {
      {{Plain('+'), Plain('+'), Plain('+')}},
      {{Extended(ext_key::End), Extended(ext_key::End), Extended(ext_key::End)}},
      {{Plain('8'), Plain('8'), Plain('3'), Plain('r')}},
      {{Plain('p'), Extended(ext_key::Left), Extended(ext_key::Left)}},
  };
  for (const Case& c : cases) {
    Frame f;
    const Pixel before = f.Centre(4);
    for (Key k : c.keys) DispatchKey(f.s, f.v, k, f.prompts);
    const QImage image = RenderView(f.s, f.v);
    const Pixel after = f.Centre(4);
    EXPECT_GT(std::hypot(after.x - before.x, after.y - before.y), 16.0);  // moved by more than its diameter
    EXPECT_EQ(f.At(image, after.x, after.y), ElementColour(7));
    EXPECT_EQ(f.At(image, before.x, before.y), BackgroundColour);
  }
}

TEST(ViewerQt, KeysFromQtEvents) {
  struct Case {
    int qtKey;
    Qt::KeyboardModifiers modifiers;
    const char* text;
    std::optional<Key> key;
  };
  const Case cases[] = {
      {Qt::Key_Left, Qt::NoModifier, "", Extended(ext_key::Left)},
      {Qt::Key_Left, Qt::ControlModifier, "", Extended(ext_key::CtrlLeft)},
      {Qt::Key_Up, Qt::ControlModifier, "", Extended(ext_key::CtrlUp)},
      {Qt::Key_PageUp, Qt::NoModifier, "", Extended(ext_key::PgUp)},
      {Qt::Key_End, Qt::NoModifier, "", Extended(ext_key::End)},
      {Qt::Key_Insert, Qt::NoModifier, "", Extended(ext_key::Ins)},
      {Qt::Key_F10, Qt::NoModifier, "", Extended(ext_key::F10)},
      {Qt::Key_Plus, Qt::NoModifier, "+", Plain('+')},
      {Qt::Key_Y, Qt::ShiftModifier, "Y", Plain('Y')},
      {Qt::Key_5, Qt::KeypadModifier, "5", Plain('5')},
      {Qt::Key_Shift, Qt::ShiftModifier, "", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(KeyFromQt(c.qtKey, c.modifiers, c.text), c.key) << c.qtKey;
}

TEST(ViewerQt, MainWindowHasThreePanesAndTakesKeys) {
  EnsureQtApplication(true);
  Session s;
  Formaldehydeish(s);
  s.messages = {" Specifications read in OK"};
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  ViewerWindow window(s, v);
  window.show();
  QApplication::processEvents();

  EXPECT_EQ(window.view()->windowTitle(), "Molecular view");
  QStringList docks;
  for (auto* d : window.findChildren<QDockWidget*>()) docks << d->windowTitle();
  docks.sort();
  EXPECT_EQ(docks, QStringList({"Control keys", "Message window"}));
  EXPECT_TRUE(QFontInfo(window.keysPane()->font()).fixedPitch());
  EXPECT_TRUE(window.keysPane()->toPlainText().startsWith(" *** Geometry view mode ***"));
  EXPECT_EQ(window.messagePane()->toPlainText(), " Specifications read in OK");
  // The view takes about seven tenths of the frame.
  EXPECT_NEAR(static_cast<double>(window.view()->width()) / window.width(), 0.7, 0.05);
  EXPECT_EQ(v.window.width, window.view()->width());

  QKeyEvent plus(QEvent::KeyPress, Qt::Key_Plus, Qt::NoModifier, "+");
  QApplication::sendEvent(window.view(), &plus);
  EXPECT_DOUBLE_EQ(s.view.zoom, 1.1);
  QKeyEvent f4(QEvent::KeyPress, Qt::Key_F4, Qt::NoModifier);
  QApplication::sendEvent(window.view(), &f4);
  EXPECT_TRUE(window.keysPane()->toPlainText().startsWith(" *** Fragment edit mode ***"));
  QKeyEvent q(QEvent::KeyPress, Qt::Key_Q, Qt::NoModifier, "q");
  QApplication::sendEvent(window.view(), &q);
  EXPECT_EQ(window.ending(), Ending::Exit);
  EXPECT_FALSE(window.isVisible());
  if (const char* shot = std::getenv("QUINTOR_WINDOW_SHOT")) window.grab().save(shot);
}

TEST(ViewerQt, InputDialogTakesTheFieldWhicheverButtonClosesIt) {
  EnsureQtApplication(true);
  struct Case {
    const char* typed;
    bool ok;
    double result;
  };
  const Case cases[] = {{"12.5", true, 12.5}, {"7.25", false, 7.25}, {"abc", false, 5.0}};
  for (const Case& c : cases) {
    DialogPrompts prompts;
    QString title;
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      title = dialog->windowTitle();
      dialog->findChild<QLineEdit*>()->setText(c.typed);
      c.ok ? dialog->accept() : dialog->reject();
    });
    EXPECT_EQ(prompts.AskReal(" Rotation step is    5.00 deg. Enter new step in degrees", 5.0), c.result);
    EXPECT_EQ(title, "Input new value");
  }
  // Confirmation: No is the default button.
  for (bool yes : {false, true}) {
    DialogPrompts prompts;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      EXPECT_EQ(box->windowTitle(), "Confirmation");
      EXPECT_EQ(box->defaultButton()->text(), "No");
      for (auto* b : box->buttons())
        if (b->text() == (yes ? "Yes" : "No")) b->click();
    });
    EXPECT_EQ(prompts.AskYesNo("Come back to initial orientation?"), yes);
  }
}
