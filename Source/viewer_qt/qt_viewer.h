// The windows of the program on Qt 6 Widgets. Nothing here decides what is
// drawn or what a key does (that is viewer/); this layer opens the windows,
// paints a Scene, shows the prompts as dialogs and turns Qt's events into
// the viewer's commands. No Qt type appears in this header.
#pragma once

#include <string>

#include "model/session.h"
#include "viewer/services.h"

namespace quintor {

// True when a window system is at hand: DISPLAY, WAYLAND_DISPLAY or an
// explicit QT_QPA_PLATFORM (such as "offscreen").
bool HasDisplay();

// Makes the one application object of the process, once; on the offscreen
// platform when `offscreen` is set and no platform was named.
void EnsureQtApplication(bool offscreen = false);

// The interactive stage: the main window with the Molecular view, the
// Message window and the Control keys, until the user ends the work.
// True when the end asked for the evaluation ("CalcTD and Quit").
bool RunWindows(Session& s);
// The same with the Calculations menu served by `services`.
bool RunWindowsWith(Session& s, const WindowServices& services);

// The job dialog "Set the input file name and job options" until it has a
// name (its caption says so) or is cancelled; OK sets the Session's input
// name and options. False for Cancel.
bool AskJobDialog(Session& s);

// The "Confirmation" and "Input new value" dialogs on their own, before the
// main window is up.
bool AskYesNoDialog(const std::string& text);
std::string AskTextDialog(const std::string& text, const std::string& value);

// Paints the starting view of the last coordinate set into a PNG of the
// view's default size (896 x 947), without a display.
bool SnapView(Session& s, const std::string& pngFile);

// Draws the broadened spectrum of the modes into a PNG of 1000 x 500 pixels.
bool PlotSpectrumPng(Session& s, const std::string& pngFile);

}  // namespace quintor
