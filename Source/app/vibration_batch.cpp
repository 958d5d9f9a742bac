// The normal modes in a batch run: the film of a mode as an XYZ file, the
// key-S block of a mode in the MainLog, and the broadened spectrum.
#include <fstream>
#include <string>
#include <vector>

#include "app/run.h"
#include "io/fortran_io.h"
#include "readers/elements.h"
#include "viewer/fragment_db.h"
#include "viewer/journal.h"
#include "viewer/scene.h"
#include "viewer/view_model.h"
#include "viewer/structure_files.h"
#include "viewer/vibration.h"

namespace quintor {

namespace {

// The geometry the viewer opens on: the last coordinate set.
std::vector<Vec3> FinalGeometry(const Session& s) {
  const CoordSet& set = s.Set(s.iCyc);
  if (static_cast<int>(set.xyz.size()) >= s.nAtoms)
    return {set.xyz.begin(), set.xyz.begin() + s.nAtoms};
  return s.xyz;
}

bool HasMode(Session& s, int n, const char* option) {
  if (n >= 1 && n <= static_cast<int>(s.modes.size())) return true;
  const std::string text = std::string(" WARNING! ") + option + ": there is no normal mode " + std::to_string(n) +
                           " (the input has " + std::to_string(s.modes.size()) + ")";
  s.Console() << text << "\n";
  s.log.EndLine();
  s.log.Line(text);
  return false;
}

bool IsPng(const std::string& name) {
  return name.size() > 4 && (name.ends_with(".png") || name.ends_with(".PNG"));
}

}  // namespace

void RunVibrationEntries(Session& s, const Frontend* frontend) {
  const Options& o = s.opt;
  if (!o.filmFile.empty() && HasMode(s, o.showMode, "/MODE")) {
    std::vector<std::string> symbols;
    for (int i = 0; i < s.nAtoms; ++i) symbols.emplace_back(ElementSymbol(s.atomicNumber[i]));
    if (!WriteFilmXyz(s, o.showMode, FinalGeometry(s), symbols, o.filmFile))
      s.Console() << " WARNING! Can not write " << o.filmFile << "\n";
  }
  if (o.distortMode != 0 && HasMode(s, o.distortMode, "/DISTORT"))
    WriteDistortedGeometry(s, o.distortMode, FinalGeometry(s), o.distortAmplitude);
  if (!o.spectrumFile.empty()) {
    bool written = false;
    if (!IsPng(o.spectrumFile))
      written = WriteSpectrumCsv(s, o.spectrumFile);
    else if (frontend && frontend->plotSpectrum)
      written = frontend->plotSpectrum(s, o.spectrumFile);
    if (!written) s.Console() << " WARNING! Can not write " << o.spectrumFile << "\n";
  }
}

bool ReplayPlayFile(Session& s) {
  ViewerState v;
  StartViewer(s, v);
  for (int i = 0; i < s.nAtoms; ++i) v.symbols.emplace_back(ElementSymbol(s.atomicNumber[i]));
  LoadCoordinateSet(s, v);
  FitStartingView(s, v.window.Aspect(), s.view);
  v.services = &RunServices();
  v.elements = &ProgramElements();  // key N adds from the fragment database as in the window
  bool thermo = false;
  if (!s.opt.playFile.empty()) {
    std::ifstream in(s.opt.playFile);
    if (!in) throw FatalReadError(FieldPlace{s.opt.playFile, 0, 0, 0, "journal"}, "missing or unreadable");
    thermo = ReplayJournal(s, v, in, s.opt.playFile) == Ending::CalcTDAndQuit;
  }
  // The structure as the journal left it.
  const std::string& save = s.opt.saveFile;
  const bool zmat = save.size() > 6 && save.ends_with(".gzmat");
  if (!save.empty() && !(zmat ? WriteStructureZMatrix(s, v, save) : WriteStructureFile(s, v, save)))
    s.Console() << " WARNING! Can not write " << s.opt.saveFile << " (extensions: xyz, gjf, com, mop, inp)\n";
  if (!s.opt.zmatFile.empty() && !WriteStructureZMatrix(s, v, s.opt.zmatFile))
    s.Console() << " WARNING! Can not write " << s.opt.zmatFile << "\n";
  return thermo;
}

}  // namespace quintor
