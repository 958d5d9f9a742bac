#include "viewer_qt/help.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <QCoreApplication>
#include <QTextBrowser>

namespace quintor {

std::string UserSections(const std::string& readme) {
  const size_t start = readme.find("\n## Usage");
  if (start == std::string::npos) return {};
  const size_t end = readme.find("\n## Layout", start + 1);
  return readme.substr(start + 1, end == std::string::npos ? std::string::npos : end - start - 1);
}

std::string ReadmeText() {
  namespace fs = std::filesystem;
  const fs::path exe = QCoreApplication::applicationDirPath().toStdString();
  for (const fs::path& p : {exe / "../share/doc/quintor/README.md", fs::path(QUINTOR_README)}) {
    std::ifstream in(p);
    if (!in) continue;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
  return {};
}

QWidget* ShowHelpWindow(QWidget* owner, const std::vector<std::string>& keyTable) {
  auto* help = owner->findChild<QTextBrowser*>("HelpWindow");
  if (help == nullptr) {
    help = new QTextBrowser(owner);
    help->setObjectName("HelpWindow");
    help->setWindowFlag(Qt::Window);
    help->setWindowTitle("Quintor help");
    help->resize(800, 900);
  }
  std::string text = "## Keys of the current mode\n\n```\n";
  for (const std::string& line : keyTable) text += line + "\n";
  text += "```\n\n";
  const std::string sections = UserSections(ReadmeText());
  text += sections.empty() ? std::string("(README.md not found)\n") : sections;
  help->setMarkdown(QString::fromStdString(text));
  help->show();
  help->raise();
  return help;
}

}  // namespace quintor
