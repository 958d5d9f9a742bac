#include "viewer_qt/session_menu.h"

#include <algorithm>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QUrl>

#include "viewer_qt/windows.h"

namespace quintor {

int ChooseLogFile(QWidget* parent, DialogValues& values) {
  QFileDialog dialog(parent, "Open");
  // Qt's own chooser: the same on every desktop, and reachable offscreen.
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setFileMode(QFileDialog::ExistingFile);
  QStringList filters;
  for (const LogFileType& t : LogFileTypes()) filters << QString::fromStdString(t.Filter());
  dialog.setNameFilters(filters);
  const QFileInfo current(QString::fromStdString(values[1000]));
  if (!values[1000].empty()) dialog.setDirectory(current.absolutePath());
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return DialogCancel;
  const qsizetype type = std::max<qsizetype>(filters.indexOf(dialog.selectedNameFilter()), 0);
  values = OpenLogAnswer(dialog.selectedFiles().front().toStdString(), LogFileTypes()[type].format);
  return DialogOk;
}

std::vector<RecentFile> LoadRecentFiles(QSettings& settings) {
  std::vector<RecentFile> list;
  const int n = settings.beginReadArray("recentFiles");
  for (int k = 0; k < n; ++k) {
    settings.setArrayIndex(k);
    const std::string name = settings.value("name").toString().toStdString();
    if (!name.empty()) list.push_back({name, static_cast<FormatCode>(settings.value("format", -1).toInt())});
  }
  settings.endArray();
  return list;
}

void SaveRecentFiles(QSettings& settings, const std::vector<RecentFile>& list) {
  settings.remove("recentFiles");
  settings.beginWriteArray("recentFiles", static_cast<int>(list.size()));
  for (size_t k = 0; k < list.size(); ++k) {
    settings.setArrayIndex(static_cast<int>(k));
    settings.setValue("name", QString::fromStdString(list[k].name));
    settings.setValue("format", static_cast<int>(list[k].format));
  }
  settings.endArray();
}

void RememberRecentInput(const Session& s) {
  const QFileInfo input(QString::fromStdString(s.files.inputName));
  if (!input.isFile()) return;  // a new structure is there only at the end
  QSettings settings("Quintor", "Quintor");
  std::vector<RecentFile> list = LoadRecentFiles(settings);
  RememberRecentFile(list, {input.absoluteFilePath().toStdString(), s.opt.formatCode});
  SaveRecentFiles(settings, list);
}

// ---- The window's part --------------------------------------------------------------

// "Open recent" behind "Open..." in the File menu, filled as it opens: the
// files no longer there are taken off the list, and the Message window says so.
void ViewerWindow::BuildRecentMenu() {
  setAcceptDrops(true);
  QMenu* file = menuBar()->actions().isEmpty() ? nullptr : menuBar()->actions().front()->menu();
  if (!file) return;
  QAction* before = nullptr;
  const QList<QAction*> items = file->actions();
  for (qsizetype k = 0; k + 1 < items.size(); ++k)
    if (items[k]->text() == "&Open...") before = items[k + 1];
  recentMenu_ = new QMenu("Open &recent", file);
  recentMenu_->setObjectName("RecentFiles");
  file->insertMenu(before, recentMenu_);
  connect(recentMenu_, &QMenu::aboutToShow, this, [this] {
    recentMenu_->clear();
    QSettings settings("Quintor", "Quintor");
    std::vector<RecentFile> list = LoadRecentFiles(settings);
    for (std::string& line : DropMissingRecentFiles(list)) v_.messages.push_back(std::move(line));
    SaveRecentFiles(settings, list);
    ShowNewMessages();
    if (list.empty()) recentMenu_->addAction("(none)")->setEnabled(false);
    for (const RecentFile& r : list) {
      QAction* item = recentMenu_->addAction(QString::fromStdString(r.name));
      connect(item, &QAction::triggered, this, [this, r] { OpenFile(r.name, r.format); });
    }
  });
}

void ViewerWindow::OpenFile(const std::string& name, FormatCode format) {
  if (v_.film.running) return;  // the film has the keyboard and the mouse to itself
  const DialogValues answer = OpenLogAnswer(name, format);
  journal_.MenuItem(MenuCommand::Open);
  journal_.Line("answer " + EncodeDialogAnswer(DialogOk, answer));
  Apply(OpenLog(s_, v_, answer));
}

namespace {

QString DroppedFile(const QMimeData* data) {
  if (!data || !data->hasUrls()) return {};
  for (const QUrl& url : data->urls())
    if (url.isLocalFile()) return url.toLocalFile();
  return {};
}

}  // namespace

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFile(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void ViewerWindow::dropEvent(QDropEvent* event) {
  const QString name = DroppedFile(event->mimeData());
  if (name.isEmpty()) return;
  event->acceptProposedAction();
  OpenFile(name.toStdString(), FormatCode::Automatic);
}

}  // namespace quintor
