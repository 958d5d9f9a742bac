// The current structure written as an input of another program: XYZ, a
// Gaussian input, a MOPAC input or a GAMESS $DATA group, chosen by the
// file's extension. Coordinates in A with ten decimals.
#pragma once

#include <string>

#include "model/session.h"
#include "viewer/viewer_state.h"

namespace quintor {

enum class StructureFormat { None, Xyz, Gaussian, Mopac, Gamess };

// .xyz; .gjf, .com, .gau; .mop, .dat; .inp (any case).
StructureFormat StructureFormatOf(const std::string& path);

// False when the extension is unknown or the file can not be written.
bool WriteStructureFile(const Session& s, const ViewerState& v, const std::string& path);

// The Z-matrix of the whole structure on the first three marked atoms (1,
// 2, 3 without marks) as a Gaussian Z-matrix file.
bool WriteStructureZMatrix(const Session& s, const ViewerState& v, const std::string& path);

}  // namespace quintor
