#include "viewer/vibration.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

#include "io/fortran_io.h"
#include "viewer/view_model.h"

namespace quintor {

namespace {

constexpr double kA = constants::BohrToAngstrom;
constexpr double kPhaseStep = 2.0 * std::numbers::pi / FilmFrames;

Vec3 Displacement(const VibMode& m, size_t atom) { return atom < m.disp.size() ? m.disp[atom] : Vec3{}; }

std::string AtomLine(const Session& s, int i, const Vec3& r) {
  return FmtX(1) + FmtA(s.atomName[i], 5) + FmtX(8) + FmtI(s.atomicNumber[i], 2) + FmtX(7) + FmtF(r[0], 12, 6) +
         FmtF(r[1], 12, 6) + FmtF(r[2], 12, 6);
}

// One coordinate table: base in A plus `sign` A times the unit vector.
void DistortedTable(Session& s, const std::vector<Vec3>& base, const VibMode& m, double shift) {
  const std::string dash(60, '-');
  s.log.Line(dash);
  for (int i = 0; i < s.nAtoms; ++i) {
    const Vec3 d = Displacement(m, static_cast<size_t>(i));
    Vec3 r;
    for (int k = 0; k < 3; ++k) r[k] = kA * base[i][k] + shift * d[k];
    s.log.Line(AtomLine(s, i, r));
  }
  s.log.Line(dash);
}

Outcome Play(Session& s, ViewerState& v) {
  StartFilm(s, v);
  Outcome out;
  out.filmStarted = true;
  return out;
}

Outcome StepMode(Session& s, ViewerState& v, int next) {
  Outcome out;
  if (next < 1) next = 1, out.beep = true;
  if (next > v.nVib) next = v.nVib, out.beep = true;
  v.film.currentMode = next;
  out.filmStarted = Play(s, v).filmStarted;
  return out;
}

Outcome BackToGeometry(Session& s, ViewerState& v) {
  v.mode = ViewerMode::Geometry;
  v.modeMenusGreyed = false;
  v.help = GeometryHelp(v.hasVibrations);
  LoadCoordinateSet(s, v);  // unsaved edits of the coordinates are lost here
  Outcome out;
  out.helpChanged = true;
  return out;
}

void SaveDistorted(Session& s, ViewerState& v, Prompts& prompts) {
  const double a = prompts.AskReal("Enter the amplitude for the geo distortion:", 0.1);
  WriteDistortedGeometry(s, v.film.currentMode, v.film.base, a);
}

void EndFilm(Session& s, Film& f) {
  f.running = false;
  f.ring.listening = false;
  f.base = s.xyz;
}

}  // namespace

std::vector<Vec3> FilmFrame(const std::vector<Vec3>& base, const VibMode& mode, double phase) {
  std::vector<Vec3> xyz(base.size());
  const double w = FilmAmplitude * std::sin(phase);
  for (size_t i = 0; i < base.size(); ++i) {
    const Vec3 d = Displacement(mode, i);
    for (int k = 0; k < 3; ++k) xyz[i][k] = base[i][k] + w * d[k];
  }
  return xyz;
}

std::string VibrationLine(int number, const VibMode& mode) {
  return " Vibration No." + FmtI(number, 4) + FmtX(10) + "Frequency:" + FmtF(mode.freq, 10, 3) + FmtX(10) +
         "Intensity:" + FmtF(mode.intensity * IntensityScale, 10, 3);
}

void WriteDistortedGeometry(Session& s, int number, const std::vector<Vec3>& base, double amplitude) {
  const VibMode& m = s.modes.at(static_cast<size_t>(number - 1));
  double norm = 0.0;
  for (const Vec3& d : m.disp) norm += d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  norm = std::sqrt(norm);
  const double shift = norm > 0.0 ? amplitude / norm : 0.0;
  const std::string tail = "*(mode " + FmtI(number, 3) + ").  Freq =" + FmtF(m.freq, 8, 2) +
                           ". Intens =" + FmtF(m.intensity * IntensityScale, 8, 2);
  s.log.EndLine();
  s.log.Line();
  s.log.Line();
  s.log.Line("Saving coordinates distorted by the vibration " + FmtI(number, 3) + "  (Angstroems)");
  s.log.Line("Distortion amplitude :" + FmtF(amplitude, 10, 3));
  s.log.Line();
  s.log.Line();
  s.log.Line("Non-distorted coordinates ");
  DistortedTable(s, base, m, 0.0);
  s.log.Line();
  s.log.Line();
  s.log.Line("(Coordinates) +" + FmtF(amplitude, 5, 2) + tail);
  DistortedTable(s, base, m, shift);
  s.log.Line();
  s.log.Line();
  s.log.Line("(Coordinates) -" + FmtF(amplitude, 5, 2) + tail);
  DistortedTable(s, base, m, -shift);
  s.log.Line();
}

bool WriteFilmXyz(const Session& s, int number, const std::vector<Vec3>& base,
                  const std::vector<std::string>& symbols, const std::string& path) {
  const VibMode& m = s.modes.at(static_cast<size_t>(number - 1));
  std::ofstream out(path);
  if (!out) return false;
  for (int k = 1; k <= FilmFrames; ++k) {
    const auto xyz = FilmFrame(base, m, k * kPhaseStep);
    out << xyz.size() << "\nmode " << number << " frame " << k << " of " << FilmFrames << "  "
        << Trim(FmtF(m.freq, 12, 2)) << " cm-1\n";
    for (size_t i = 0; i < xyz.size(); ++i)
      out << FmtA(i < symbols.size() ? symbols[i] : "X", 3) << FmtF(xyz[i][0] * kA, 14, 8)
          << FmtF(xyz[i][1] * kA, 14, 8) << FmtF(xyz[i][2] * kA, 14, 8) << "\n";
  }
  return static_cast<bool>(out);
}

std::vector<std::string> VibrationHelp() {
  std::vector<std::string> lines = {
      " *** Vibration view mode ***", " ARROWS, END, PGDN - rotation", " CTRL-ARROWS       - moving",
      " +,- - zooming the view",      " F2  - geometry view mode",      " F4  - edit molecule",
      " F10 - exit program",          " M   - set mode number",         " V   - show current vibration",
      " 9,N - next mode",             " 7,B - previous mode",           " 0   - first mode",
      " .   - last mode",             " I   - identifiers on/off",      " T   - balls on/off",
      " S   - save vibration coords", " Esc,Space,Click - stop vibration", " G   - go to the geometry view",
      " 4,6 - rotation around the X-axe", " 2,8 - rotation around the Y-axe", " 1,3 - rotation around the Z-axe",
      " +,- - zooming the view",      " R,L - horizontal shift",        " U,D - vertical shift",
      " Q   - quit"};
  for (auto& l : lines) l.resize(std::max<size_t>(l.size(), 33), ' ');
  return lines;
}

std::vector<SpectrumPoint> BroadenedSpectrum(const std::vector<VibMode>& modes, double fwhm) {
  double lo = 1e300, hi = -1e300;
  for (const VibMode& m : modes)
    if (m.given && m.freq > 0.0) lo = std::min(lo, m.freq), hi = std::max(hi, m.freq);
  if (lo > hi) return {};
  const double half = fwhm > 0.0 ? fwhm / 2.0 : DefaultFwhm / 2.0;
  const double first = std::max(0.0, std::floor(lo) - 100.0), last = std::ceil(hi) + 100.0;
  std::vector<SpectrumPoint> points;
  for (double x = first; x <= last; x += 1.0) {
    double y = 0.0;
    for (const VibMode& m : modes) {
      if (!m.given || m.freq <= 0.0) continue;
      const double dx = x - m.freq;
      y += m.intensity * IntensityScale * half * half / (dx * dx + half * half);
    }
    points.push_back({x, y});
  }
  return points;
}

bool WriteSpectrumCsv(const Session& s, const std::string& path, double fwhm) {
  std::ofstream out(path);
  if (!out) return false;
  out << (s.opt.raman ? "wavenumber,raman\n" : "wavenumber,ir\n");
  for (const SpectrumPoint& p : BroadenedSpectrum(s.modes, fwhm))
    out << Trim(FmtF(p.wavenumber, 12, 1)) << "," << Trim(FmtF(p.value, 16, 6)) << "\n";
  return static_cast<bool>(out);
}

// ---- The view ----------------------------------------------------------------------

int AskModeNumber(const ViewerState& v, Prompts& prompts) {
  const std::string text = "  Enter number of normal vibration (1 -" + FmtI(v.nVib, 4) + "):";
  for (;;) {
    const int n = prompts.AskInteger(text, v.nVib);
    if (n >= 1 && n <= v.nVib) return n;
  }
}

Outcome EnterVibrationView(Session& s, ViewerState& v, Prompts& prompts) {
  v.mode = ViewerMode::Vibration;
  v.help = VibrationHelp();
  v.setLine.clear();
  v.film.currentMode = AskModeNumber(v, prompts);
  Outcome out = Play(s, v);
  out.helpChanged = true;
  return out;
}

Outcome PlayMode(Session& s, ViewerState& v, int number) {
  Outcome out;
  if (number < 1 || number > v.nVib || v.film.running) return out;
  out.helpChanged = v.mode != ViewerMode::Vibration;
  v.mode = ViewerMode::Vibration;
  v.help = VibrationHelp();
  v.film.currentMode = number;
  out.filmStarted = Play(s, v).filmStarted;
  return out;
}

void StartFilm(Session& s, ViewerState& v) {
  Film& f = v.film;
  v.setLine = VibrationLine(f.currentMode, s.modes.at(static_cast<size_t>(f.currentMode - 1)));
  f.base = s.xyz;
  f.phase = 0.0;
  f.period = f.frame = 0;
  f.stopRequested = false;
  f.ring.Start();
  f.running = true;
}

bool FilmTick(Session& s, ViewerState& v) {
  Film& f = v.film;
  if (!f.running) return false;
  f.phase += kPhaseStep;
  ++f.frame;
  s.xyz = FilmFrame(f.base, s.modes.at(static_cast<size_t>(f.currentMode - 1)), f.phase);
  if (f.frame < FilmFrames) return true;
  // The end of a period: the molecule stands at its base again.
  bool stop = false;
  if (f.ring.Waiting()) {
    const int byte = f.ring.Next();
    stop = byte == ' ' || byte == 27;
  }
  if (f.stopRequested) stop = true;
  ++f.period;
  f.frame = 0;
  f.phase = 0.0;
  if (stop || f.period == FilmPeriods) EndFilm(s, f);
  return f.running;
}

void RunFilm(Session& s, ViewerState& v) {
  while (FilmTick(s, v)) {
  }
}

bool FilmKey(ViewerState& v, Key key) {
  KeyRing& ring = v.film.ring;
  if (!ring.listening) return true;
  if (key.code == 'Q') {  // the stop of the key reader, not of the program
    ring.listening = false;
    return true;
  }
  if (key.code == 0 || key.code == 224) {  // an extended key takes two bytes
    if (!ring.Push(static_cast<unsigned char>(key.code))) return false;
    return ring.Push(static_cast<unsigned char>(key.ext));
  }
  return ring.Push(static_cast<unsigned char>(key.code));
}

Outcome DispatchVibrationKey(Session& s, ViewerState& v, Key key, Prompts& prompts) {
  ViewState& view = s.view;
  const double step = view.rotationStep;
  const int mode = v.film.currentMode;
  Outcome out;
  if (key.code == 0 || key.code == 224) {
    switch (key.ext) {
      case ext_key::F1: out.showHelp = true; return out;
      case ext_key::F2: return BackToGeometry(s, v);
      case ext_key::F4: v.messages.emplace_back(std::string(NotAvailable) + ": F4  Edit Structure"); return out;
      case ext_key::F10: out.ending = Ending::Exit; return out;
      // Left and Right turn the other way than in the Geometry view.
      case ext_key::Left: RotateView(view, 0, +step, 0); return out;
      case ext_key::Right: RotateView(view, 0, -step, 0); return out;
      case ext_key::Up: RotateView(view, 0, 0, +step); return out;
      case ext_key::Down: RotateView(view, 0, 0, -step); return out;
      case ext_key::End: RotateView(view, -step, 0, 0); return out;
      case ext_key::PgDn: RotateView(view, +step, 0, 0); return out;
      // A fixed 0.1, not the translation step.
      case ext_key::CtrlRight: view.shiftX += 0.1; return out;
      case ext_key::CtrlLeft: view.shiftX -= 0.1; return out;
      case ext_key::CtrlUp: view.shiftY += 0.1; return out;
      case ext_key::CtrlDown: view.shiftY -= 0.1; return out;
      case ext_key::PgUp: return StepMode(s, v, mode + 1);
      case ext_key::Home: return StepMode(s, v, mode - 1);
      case ext_key::Ins: return StepMode(s, v, 1);
      case ext_key::Del: return StepMode(s, v, v.nVib);
      default: return out;
    }
  }
  switch (key.code) {
    case '4': RotateView(view, 0, +step, 0); return out;
    case '6': RotateView(view, 0, -step, 0); return out;
    case '8': RotateView(view, 0, 0, +step); return out;
    case '2': RotateView(view, 0, 0, -step); return out;
    case '1': RotateView(view, -step, 0, 0); return out;
    case '3': RotateView(view, +step, 0, 0); return out;
    case '+': view.zoom *= 1.1; return out;
    case '-': view.zoom /= 1.1; return out;
    case 'r': case 'R': view.shiftX += 0.1; return out;
    case 'l': case 'L': view.shiftX -= 0.1; return out;
    case 'u': case 'U': view.shiftY += 0.1; return out;
    case 'd': case 'D': view.shiftY -= 0.1; return out;
    case '5':
      if (prompts.AskYesNo("Come back to initial configuration?")) ResetView(view);
      return out;
    case 'i': case 'I': view.showLabels = -view.showLabels; return out;
    case 't': case 'T': view.showBalls = -view.showBalls; return out;
    case 's': case 'S': SaveDistorted(s, v, prompts); return out;
    case '9': case 'n': case 'N': return StepMode(s, v, mode + 1);
    case '7': case 'b': case 'B': return StepMode(s, v, mode - 1);
    case '0': return StepMode(s, v, 1);
    case '.': return StepMode(s, v, v.nVib);
    case 'v': case 'V': return Play(s, v);
    case 'm': case 'M': v.film.currentMode = AskModeNumber(v, prompts); return Play(s, v);
    case 'g': case 'G': return BackToGeometry(s, v);
    case 'q': case 'Q': out.ending = Ending::Exit; return out;
    default: return out;
  }
}

}  // namespace quintor
