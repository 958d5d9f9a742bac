// The help window of F1 and Help > On-screen navigation: the key table of
// the mode on show and the README's sections for users.
#pragma once

#include <string>
#include <vector>

class QWidget;

namespace quintor {

// The README's sections for users: from "## Usage" up to "## Layout".
std::string UserSections(const std::string& readme);

// The README shipped with the program: beside an installed program in
// share/doc/quintor, else the one of the source tree it was built from.
std::string ReadmeText();

// Shows (or raises and refreshes) the help window of `owner`.
QWidget* ShowHelpWindow(QWidget* owner, const std::vector<std::string>& keyTable);

}  // namespace quintor
