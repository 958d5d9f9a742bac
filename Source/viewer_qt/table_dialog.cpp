#include "viewer_qt/table_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace quintor {

namespace {

QString Q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<int>(s.size())); }
QString Name(char prefix, int id) { return QString("%1%2").arg(prefix).arg(id); }

}  // namespace

QString InputFileFilter() {
  // The resource's filter, "Output files (*.out)|*.out|...", as Qt writes it.
  return "Output files (*.out);;G9x input files (*.gjf);;Gamess input files (*.inp);;Quintor output files "
         "(*.log);;GamessUS output files (*.o);;XYZ files (*.xyz);;Text files (*.txt);;All files (*.*)";
}

TableDialog::TableDialog(const DialogSpec& spec, const DialogValues& values, QWidget* parent)
    : QDialog(parent), spec_(spec) {
  setWindowTitle(Q(spec.title));
  if (DialogValues inner = NestedValues(values, 116); !inner.empty()) nested[116] = std::move(inner);
  auto* top = new QVBoxLayout(this);
  QVBoxLayout* layout = top;
  auto* buttons = new QHBoxLayout;
  std::map<int, QButtonGroup*> groups;
  auto value = [&](int id) {
    const auto it = values.find(id);
    return it == values.end() ? QString() : QString::fromStdString(it->second);
  };
  for (const DialogControl& c : spec.controls) {
    switch (c.kind) {
      case ControlKind::Group: {
        auto* box = new QGroupBox(Q(c.label), this);
        layout = new QVBoxLayout(box);
        top->addWidget(box);
        break;
      }
      case ControlKind::Caption:
      case ControlKind::Label: {
        auto* label = new QLabel(c.kind == ControlKind::Caption ? value(c.id) : Q(c.label), this);
        label->setWordWrap(true);
        if (c.id != 0) label->setObjectName(Name('c', c.id));
        layout->addWidget(label);
        break;
      }
      case ControlKind::Edit:
      case ControlKind::ReadOnly: {
        auto* row = new QHBoxLayout;
        if (!c.label.empty()) row->addWidget(new QLabel(Q(c.label), this));
        auto* edit = new QLineEdit(value(c.id), this);
        edit->setObjectName(Name('c', c.id));
        edit->setReadOnly(c.kind == ControlKind::ReadOnly);
        row->addWidget(edit);
        layout->addLayout(row);
        break;
      }
      case ControlKind::Check: {
        auto* box = new QCheckBox(Q(c.label), this);
        box->setObjectName(Name('c', c.id));
        box->setChecked(value(c.id) == "1");
        layout->addWidget(box);
        break;
      }
      case ControlKind::Radio: {
        auto* radio = new QRadioButton(Q(c.label), this);
        radio->setObjectName(Name('c', c.id));
        auto*& group = groups[c.radioGroup];
        if (group == nullptr) group = new QButtonGroup(this);
        group->addButton(radio);
        radio->setChecked(value(c.id) == "1");
        layout->addWidget(radio);
        break;
      }
      case ControlKind::Button: {
        auto* button = new QPushButton(Q(c.label), this);
        button->setObjectName(Name('b', c.id));
        button->setAutoDefault(false);
        if (c.id == DialogOk || (spec.number == 103 && c.id == DialogNo)) button->setDefault(true);
        const bool closes = c.id == DialogOk || c.id == DialogCancel || c.id == DialogYes || c.id == DialogNo;
        (closes ? static_cast<QBoxLayout*>(buttons) : layout)->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, id = c.id] { Pressed(id); });
        break;
      }
    }
  }
  top->addLayout(buttons);
}

void TableDialog::Pressed(int id) {
  switch (id) {
    case DialogOk: case DialogCancel: case DialogYes: case DialogNo: done(id); return;
    case 1036: {  // Browse... of dialog 112: the answer goes into 1000
      const QString file = QFileDialog::getOpenFileName(this, QString(), QString(), InputFileFilter());
      if (!file.isEmpty()) findChild<QLineEdit*>("c1000")->setText(file);
      return;
    }
    case 1067: case 1068:  // the chooser opens, and the file chosen is dropped
      QFileDialog::getOpenFileName(this, QString(), QString(), InputFileFilter());
      return;
    case 1091: {  // ARIR setting
      auto it = nested.find(116);
      if (it == nested.end()) it = nested.emplace(116, Presets(DialogNumber(116))).first;
      DialogValues trial = it->second;
      if (RunTableDialog(116, trial, this) == DialogOk) it->second = trial;  // Cancel changes nothing
      return;
    }
    default: return;  // 1090, connected to nothing
  }
}

DialogValues TableDialog::Values() const {
  DialogValues v;
  for (const DialogControl& c : spec_.controls) {
    if (c.id == 0 || c.kind == ControlKind::Button || c.kind == ControlKind::Group) continue;
    const QString name = Name('c', c.id);
    if (auto* edit = findChild<QLineEdit*>(name)) v[c.id] = edit->text().toStdString();
    else if (auto* box = findChild<QCheckBox*>(name)) v[c.id] = std::string(1, box->isChecked() ? '1' : '0');
    else if (auto* radio = findChild<QRadioButton*>(name)) v[c.id] = std::string(1, radio->isChecked() ? '1' : '0');
    else if (auto* label = findChild<QLabel*>(name)) v[c.id] = label->text().toStdString();
  }
  for (const auto& [number, inner] : nested) PutNestedValues(v, number, inner);
  return v;
}

void TableDialog::SetCaption(const std::string& text) {
  if (auto* label = findChild<QLabel*>(Name('c', spec_.captionId))) label->setText(QString::fromStdString(text));
}

int RunTableDialog(int number, DialogValues& values, QWidget* parent) {
  const DialogSpec& spec = DialogNumber(number);
  for (;;) {
    TableDialog dialog(spec, values, parent);
    const int code = dialog.exec();
    values = dialog.Values();
    if (code != DialogOk) return code == 0 ? DialogCancel : code;
    const auto bad = FirstBadNumber(spec, values);
    if (!bad || bad->caption.empty() || spec.captionId == 0) return code;
    values[spec.captionId] = bad->caption;
  }
}

}  // namespace quintor
