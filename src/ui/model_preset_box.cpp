#include "ui/model_preset_box.h"

#include "app/tune_tools.h"
#include "files/presets.h"
#include "ui/qt_dialogs.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {
// The base percentage box asks to be filled in this colour; filled, it has the window's.
const char* const Missing_Style = "QLineEdit#Pre_perc { background-color: #ff8080; }";
} // namespace

Model_Preset_Box::Model_Preset_Box(App_Context& app, std::function<User_Dialogs&()> dialogs,
                                   std::function<void()> update_all, QWidget* parent)
    : QGroupBox("Model presets", parent), app_(app), dialogs_(std::move(dialogs)),
      update_all_(std::move(update_all)) {
    setObjectName("Model_preset_frame");
    auto* layout = new QVBoxLayout(this);
    PresetList_ = new QComboBox(this);
    PresetList_->setObjectName("PresetList");
    PresetList_->setPlaceholderText("Choose a preset");
    connect(PresetList_, &QComboBox::activated, this, &Model_Preset_Box::PresetList_Click);
    layout->addWidget(PresetList_);

    Preset_Changes_txt_ = new QPlainTextEdit(this);
    Preset_Changes_txt_->setObjectName("Preset_Changes_txt");
    Preset_Changes_txt_->setReadOnly(true);
    Preset_Changes_txt_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    layout->addWidget(Preset_Changes_txt_, 1);

    auto* buttons = new QHBoxLayout;
    Apply_Preset_ = new QPushButton("Apply", this);
    Apply_Preset_->setObjectName("Apply_Preset");
    connect(Apply_Preset_, &QPushButton::clicked, this, &Model_Preset_Box::Apply_Preset_Click);
    buttons->addWidget(Apply_Preset_);
    buttons->addStretch();
    buttons->addWidget(new QLabel("Base %", this));
    Pre_perc_ = new QLineEdit(this);
    Pre_perc_->setObjectName("Pre_perc");
    Pre_perc_->setMaximumWidth(60);
    Pre_perc_->setToolTip("Fuel of the preset as a percentage of the present fuel map");
    connect(Pre_perc_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!text.trimmed().isEmpty()) Pre_perc_->setStyleSheet({});
    });
    buttons->addWidget(Pre_perc_);
    Preset_B_ = new QPushButton("Preset B", this);
    Preset_B_->setObjectName("Preset_B");
    Preset_B_->setToolTip("The preset, then the fuel map's injection time brought to the base percentage");
    connect(Preset_B_, &QPushButton::clicked, this, &Model_Preset_Box::Preset_B_Click);
    buttons->addWidget(Preset_B_);
    layout->addLayout(buttons);
}

void Model_Preset_Box::Init() {
    const QSignalBlocker block(PresetList_);
    PresetList_->clear();
    for (const Preset_Row& row : app_.PresetList)
        PresetList_->addItem(From_8bit(row.name));
    PresetList_->setCurrentIndex(Preset_Exists(app_, app_.User_Preset) ? app_.User_Preset : -1);
    Show_Changes();
}

void Model_Preset_Box::Show_Changes() {
    const int n = PresetList_->currentIndex();
    std::string text = Preset_Exists(app_, n) ? Show_Preset_Changes(app_, n) : std::string();
    const std::string description = Dataset_Description(app_);
    if (!description.empty()) text += "\r\n" + description;
    QString shown = From_8bit(text);
    shown.replace("\r\n", "\n");
    Preset_Changes_txt_->setPlainText(shown);
    Apply_Preset_->setEnabled(Preset_Exists(app_, n));
    Preset_B_->setEnabled(Preset_Exists(app_, n));
}

void Model_Preset_Box::PresetList_Click(int index) {
    Select_User_Preset(app_, index);
    Show_Changes();
}

void Model_Preset_Box::Apply_Preset_Click() {
    Apply_User_Preset(app_, PresetList_->currentIndex(), update_all_);
    Show_Changes();
}

void Model_Preset_Box::Preset_B_Click() {
    const std::string base = To_8bit(Pre_perc_->text());
    double percent = 0;
    Pre_perc_->setStyleSheet(Pre_perc_Valid(base, percent) ? QString() : Missing_Style);
    quorlen::Preset_B_Click(app_, PresetList_->currentIndex(), base, dialogs_(), update_all_);
    Show_Changes();
}

} // namespace quorlen::ui
