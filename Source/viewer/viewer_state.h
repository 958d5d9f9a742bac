// The state of the interactive stage beside the view of the Session: the
// mode, the coordinate set on show, the bond list, the marked atoms, the
// projected positions of the last frame and the texts of the panes.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "numeric/vec3.h"

namespace quintor {

struct ElementTable;    // viewer/fragment_db.h
struct WindowServices;  // viewer/services.h

// The drawing surface in pixels; the world rectangle follows from it.
struct WorldWindow {
  int width = 896, height = 947;
  double Aspect() const { return static_cast<double>(width) / height; }
};

// The Vibration view turns the view as the Geometry view does; it is a
// mode of its own here because its keys mean other things.
enum class ViewerMode { Geometry = -1, FragmentEdit = 1, Vibration = 2 };

inline constexpr int MaxMarked = 4;
inline constexpr int MaxBonds = 16;

// The ring of key bytes read while a film runs: 256 bytes, Head the last
// stored, Tail the last fetched; a full ring drops the byte.
struct KeyRing {
  int head = 0, tail = 0;
  std::array<unsigned char, 256> buffer{};
  bool listening = false;  // false from a capital Q to the next film

  void Start() { head = tail = 0, listening = true; }
  bool Waiting() const { return tail != head; }
  int Next() {
    if (tail == head) return ' ';
    tail = (tail + 1) % 256;
    return buffer[tail];
  }
  bool Push(unsigned char byte) {
    const int next = (head + 1) % 256;
    if (next == tail) return false;
    head = next;
    buffer[head] = byte;
    return true;
  }
};

// The film of a normal mode: 30 frames a period, at most three periods.
struct Film {
  bool running = false;
  int currentMode = 0;       // 1-based, 0 before the first answer
  std::vector<Vec3> base;    // BaseCoords, bohr
  double phase = 0.0;
  int period = 0, frame = 0; // periods finished, frames shown in this one
  bool stopRequested = false;
  KeyRing ring;
};

// What an edit can change, kept whole so that undo gives back every bit.
struct StructureSnapshot {
  std::string what;  // the edit, for the status line of undo and redo
  int nAtoms = 0;
  std::vector<int> atomicNumber;
  std::vector<std::string> atomName;
  std::vector<double> atomMass;
  double molMass = 0.0;
  std::vector<Vec3> xyz;
  std::vector<std::vector<int>> bonds;
  std::vector<int> marked, fragmentMark;
  int fragmentAtomCount = 0;
  std::vector<Vec3> fragmentBackup;
  std::vector<std::string> symbols;
  bool structureEdited = false;
  int atomCountChanged = 0;
};

struct ViewerState {
  ViewerMode mode = ViewerMode::Geometry;
  bool modeMenusGreyed = false;        // "F3  Vibration View" of the menu, until F2 or F4
  int currentSet = 0;                  // from -1 to the Session's iCyc
  bool structureEdited = false;        // set by anything that moves atoms; never cleared
  int atomCountChanged = 0;            // -1 atoms removed, +1 added; never cleared
  bool hasVibrations = false;
  int nVib = 0;
  int noteFlag = -1;                   // toggled by M, read by nothing

  std::vector<std::vector<int>> bonds; // 1-based partners of each atom, rising, at most 16
  std::vector<int> marked;             // 1-based atom numbers, at most 4, in click order
  std::vector<std::string> symbols;    // element symbols for the status line
  Vec3 massCentre{};

  WorldWindow window;
  std::vector<Vec3> screen;            // ScreenCoords of the last frame
  std::array<Vec3, 3> axisTips{};      // ScreenCoords of 1 A along each molecular axis

  std::string setLine;                 // row 1 of the Molecular view
  std::vector<std::string> help;       // the Control keys pane
  std::vector<std::string> messages;   // lines the viewer adds to the Message window

  const ElementTable* elements = nullptr;  // the readers' table, for the fragment database
  const WindowServices* services = nullptr;  // the Calculations menu
  // Fragment edit: the flood-filled fragment, apart from the marked atoms.
  std::vector<int> fragmentMark;       // per atom: 0 out, 1 in, -1 only while a piece is unmarked
  int fragmentAtomCount = 0;           // atoms flooded since the marks were cleared; only counts up
  std::vector<Vec3> fragmentBackup;    // XYZ of the fragment at the last click in the edit mode
  std::vector<StructureSnapshot> undo, redo;

  Film film;                           // the Vibration view
  bool showArrows = false;             // displacement arrows of film.currentMode
};

}  // namespace quintor
