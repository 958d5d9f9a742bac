// The Vibration view: the film of a normal mode, the keys that wait after
// it, the save of the two distorted geometries, and the broadened spectrum
// of the modes. No window is needed: a window layer calls FilmTick at the
// film's pace and paints after each frame.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

inline constexpr int FilmFrames = 30;       // frames a period
inline constexpr int FilmPeriods = 3;       // at most
inline constexpr int FilmPaceMs = 50;       // sleep after each frame
inline constexpr double FilmAmplitude = 2.0; // in the units of the stored vector
// Every intensity is multiplied by this for display.
inline constexpr double IntensityScale = 1.0;

// base + 2.0 sin(phase) d, d the displacement of each atom in `mode`.
std::vector<Vec3> FilmFrame(const std::vector<Vec3>& base, const VibMode& mode, double phase);

// Row 1 in the Vibration view: " Vibration No.   7          Frequency:  ...".
std::string VibrationLine(int number, const VibMode& mode);

// The key-S block: the base geometry and base +- A times the unit 3N-vector
// of the mode, in A, to the MainLog.
void WriteDistortedGeometry(Session& s, int number, const std::vector<Vec3>& base, double amplitude);

// The film of mode `number` (1-based) about `base` as a 30-frame XYZ file in
// A, frame k at the phase 2 pi k / 30. False when the file can not be written.
bool WriteFilmXyz(const Session& s, int number, const std::vector<Vec3>& base,
                  const std::vector<std::string>& symbols, const std::string& path);

// The key help of the Vibration view.
std::vector<std::string> VibrationHelp();

// ---- The spectrum ----------------------------------------------------------------

struct SpectrumPoint {
  double wavenumber = 0.0;  // cm-1
  double value = 0.0;       // sum of Lorentzians, each as high as its mode's intensity
};

inline constexpr double DefaultFwhm = 10.0;  // cm-1

// The stick spectrum broadened by Lorentzians of full width `fwhm`, on a
// grid of 1 cm-1 from 100 cm-1 below the lowest real mode to 100 above the
// highest; imaginary modes and empty slots stay out.
std::vector<SpectrumPoint> BroadenedSpectrum(const std::vector<VibMode>& modes, double fwhm = DefaultFwhm);

// "wavenumber,ir" (or "wavenumber,raman" under /RAMAN) and one point a line.
bool WriteSpectrumCsv(const Session& s, const std::string& path, double fwhm = DefaultFwhm);

// ---- The view ----------------------------------------------------------------------

// F3, v or V: the Vibration help, the mode prompt, the film of the answer.
Outcome EnterVibrationView(Session& s, ViewerState& v, Prompts& prompts);

// "Enter number of normal vibration", asked until the answer is a mode;
// the default is always the highest mode.
int AskModeNumber(const ViewerState& v, Prompts& prompts);

// Mode `number` chosen outside the keys (a click on the spectrum): the
// Vibration view, entered when needed, plays it.
Outcome PlayMode(Session& s, ViewerState& v, int number);

// Starts the film of v.film.currentMode about the working coordinates.
void StartFilm(Session& s, ViewerState& v);

// One frame of the film, due every FilmPaceMs. At the end of a period one
// byte of the ring is looked at (a blank or Esc stops) and a click stops;
// after the third period the film ends. False once the film has ended.
bool FilmTick(Session& s, ViewerState& v);

// Runs the film to its end (a batch or a replay has no clock).
void RunFilm(Session& s, ViewerState& v);

// A key or a click while the film runs: into the ring, a capital Q deafens
// the ring to the end of the film, a click asks for the stop. False when
// the ring was full (a beep).
bool FilmKey(ViewerState& v, Key key);

// A key of the waiting Vibration view.
Outcome DispatchVibrationKey(Session& s, ViewerState& v, Key key, Prompts& prompts);

}  // namespace quintor
