// The window's ways to another session: the file chooser of File > Open,
// the recent-files list kept in the settings, and the list's submenu.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/session_files.h"

class QSettings;
class QWidget;

namespace quintor {

// The file chooser of File > Open: the formats of the job dialog as its file
// types, opened in the folder of the name in `values`; the answer goes back
// into `values` (OpenLogAnswer). DialogOk or DialogCancel.
int ChooseLogFile(QWidget* parent, DialogValues& values);

// The recent-files list of the settings (group "recentFiles"), newest first.
std::vector<RecentFile> LoadRecentFiles(QSettings& settings);
void SaveRecentFiles(QSettings& settings, const std::vector<RecentFile>& list);

// The input of a run that opens its window goes to the head of the list.
void RememberRecentInput(const Session& s);

}  // namespace quintor
