#include "ui/qx_autosetup_frm.h"

#include "tables/table_catalogue.h"
#include "ui/translation.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStringList>
#include <QTabWidget>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

QString Text(const std::string& text) {
    return QString::fromUtf8(text.c_str());
}

QString Indexed(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(name).arg(index);
}

// The warnings of the fuel frame stand out: they are why the frame is there.
void Warning_Style(QLabel* label) {
    label->setStyleSheet("color: #b00000; font-weight: bold;");
}

} // namespace

QX_AutoSetup_frm::QX_AutoSetup_frm(App_Context& app, AutoSetup_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_AutoSetup_frm");
    setWindowTitle("Auto Setup");
    // A small tool window that stays above the forms it opens, so it can lead through them.
    setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setModal(false);

    auto* layout = new QVBoxLayout(this);
    Autosetup_guidetext_ = new QPlainTextEdit(this);
    Autosetup_guidetext_->setObjectName("Autosetup_guidetext");
    Autosetup_guidetext_->setReadOnly(true);
    Autosetup_guidetext_->setMinimumSize(460, 250);
    layout->addWidget(Autosetup_guidetext_);

    auto* buttons = new QHBoxLayout;
    Step_label_ = new QLabel(this);
    Step_label_->setObjectName("Step_label");
    buttons->addWidget(Step_label_);
    buttons->addStretch(1);
    auto button = [&](const char* name, const char* caption, auto slot) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
        return b;
    };
    button("Autosetup_next(1)", "Previous step", [this] { Autosetup_next(1); });
    button("Autosetup_next(0)", "Next step", [this] { Autosetup_next(0); });
    button("Command1", "Restart", &QX_AutoSetup_frm::Command1_Click);
    button("Command2", "HELP", &QX_AutoSetup_frm::Command2_Click);
    layout->addLayout(buttons);

    AutoFuel_frame_ = Build_Fuel_Frame();
    AutoIgnition_frame_ = Build_Ignition_Frame();
    layout->addWidget(AutoFuel_frame_);
    layout->addWidget(AutoIgnition_frame_);
    AutoFuel_frame_->hide();
    AutoIgnition_frame_->hide();

    Generate_status_label_ = new QLabel(this);
    Generate_status_label_->setObjectName("Generate_status_label");
    Generate_status_label_->setWordWrap(true);
    layout->addWidget(Generate_status_label_);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    Show_Boxes();
    Form_Load();
}

// --- building -------------------------------------------------------------------------------

QLineEdit* QX_AutoSetup_frm::Add_Box(QWidget* parent, const QString& name, std::string* text,
                                     Box_Feeds feeds) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setMaximumWidth(80);
    boxes_[box] = text;
    connect(box, &QLineEdit::textEdited, this, [this, box, text, feeds] { Box_Edited(box, text, feeds); });
    return box;
}

QGroupBox* QX_AutoSetup_frm::Build_Fuel_Frame() {
    Auto_Fuel_Inputs& in = app_.autosetup.fuel.in;
    auto* frame = new QGroupBox("Engine data for fuel map calculation", this);
    frame->setObjectName("AutoFuel_frame");
    auto* v = new QVBoxLayout(frame);

    auto* grid = new QGridLayout;
    int row = 0;
    for (const Fuel_Box& b : Fuel_Boxes()) {
        grid->addWidget(Add_Box(frame, b.name, &(in.*b.text), b.feeds_air ? Box_Feeds::Air : Box_Feeds::Fuel),
                        row, 0);
        grid->addWidget(new QLabel(b.caption, frame), row, 1);
        ++row;
    }
    FuelType_option_ = new QButtonGroup(this);
    auto* types = new QHBoxLayout;
    for (int k : {Petrol, E85}) {
        auto* option = new QRadioButton(k == Petrol ? "Petrol" : "E85", frame);
        option->setObjectName(Indexed("FuelType_option", k));
        FuelType_option_->addButton(option, k);
        types->addWidget(option);
    }
    types->addStretch(1);
    grid->addLayout(types, row, 0, 1, 2);
    connect(FuelType_option_, &QButtonGroup::idClicked, this, [this](int k) {
        app_.autosetup.fuel.in.FuelType_option = k;
        Update_Fuel_hp_label(app_.autosetup.fuel, app_.engine.Sequential_Fuel, app_.log);
        Show_Fuel_Labels();
    });
    v->addLayout(grid);

    auto* curve = new QGridLayout;
    auto* heading = new QLabel("Volumetric efficiency [%]", frame);
    curve->addWidget(heading, 0, 0, 1, Speed_Points + 1);
    curve->addWidget(new QLabel("RPM", frame), 2, 0);
    curve->addWidget(new QLabel("VE [%]", frame), 3, 0);
    for (int k = 0; k < Speed_Points; ++k) {
        const auto i = static_cast<std::size_t>(k);
        auto* caption = new QLabel(Speed_Point_Caption[k], frame);
        caption->setAlignment(Qt::AlignCenter);
        curve->addWidget(caption, 1, k + 1);
        curve->addWidget(Add_Box(frame, Indexed("MaxRPM_txt", k), &in.MaxRPM_txt[i], Box_Feeds::Air), 2,
                         k + 1);
        curve->addWidget(
            Add_Box(frame, Indexed("Volume_Efficiency_txt", k), &in.Volume_Efficiency_txt[i], Box_Feeds::Air),
            3, k + 1);
    }
    v->addLayout(curve);

    auto* results = new QGridLayout;
    const std::pair<const char*, int> pairs[] = {{"Air_hp_label", 0},
                                                 {"Fuel_hp_label", 0},
                                                 {"Max_fuel_lable", 0},
                                                 {"Under_fuel_lable", 0},
                                                 {"Max_fuel_lable", 2}};
    row = 0;
    for (auto [name, first] : pairs) {
        for (int k = first; k <= first + 1; ++k) {
            auto* label = new QLabel(frame);
            label->setObjectName(Indexed(name, k));
            labels_[label->objectName().toStdString()] = label;
            if (row >= 3) Warning_Style(label);
            results->addWidget(label, row, k - first);
        }
        ++row;
    }
    auto* mode = new QLabel(frame);
    mode->setObjectName("Sequential_Fuel_label");
    labels_["Sequential_Fuel_label"] = mode;
    results->addWidget(mode, row, 0, 1, 2);
    results->setColumnStretch(1, 1);
    v->addLayout(results);

    auto* generate = new QPushButton("Generate fuel map", frame);
    generate->setObjectName("Generate_Autofuel_cmd");
    generate->setAutoDefault(false);
    connect(generate, &QPushButton::clicked, this, &QX_AutoSetup_frm::Generate_Autofuel_cmd_Click);
    v->addWidget(generate, 0, Qt::AlignRight);
    return frame;
}

QGroupBox* QX_AutoSetup_frm::Build_Ignition_Frame() {
    Auto_Ignition_Inputs& in = app_.autosetup.ignition.in;
    auto* frame = new QGroupBox("Engine data for ignition map calculation", this);
    frame->setObjectName("AutoIgnition_frame");
    auto* v = new QVBoxLayout(frame);
    auto* grid = new QGridLayout;
    int row = 0;
    for (const Ignition_Box& b : Ignition_Boxes()) {
        grid->addWidget(Add_Box(frame, b.name, &(in.*b.text), Box_Feeds::Nothing), row, 0);
        auto* caption = new QLabel(frame);
        caption->setObjectName(QStringLiteral("%1_label").arg(b.name));
        ignition_captions_[static_cast<std::size_t>(row)] = caption;
        grid->addWidget(caption, row, 1);
        ++row;
    }
    grid->setColumnStretch(1, 1);
    v->addLayout(grid);
    Ign_load_label_ = new QLabel(frame);
    Ign_load_label_->setObjectName("Ign_load_label");
    v->addWidget(Ign_load_label_);

    auto* generate = new QPushButton("Generate ignition map", frame);
    generate->setObjectName("Generate_Autoignition_cmd");
    generate->setAutoDefault(false);
    connect(generate, &QPushButton::clicked, this, &QX_AutoSetup_frm::Generate_Autoignition_cmd_Click);
    v->addWidget(generate, 0, Qt::AlignRight);
    return frame;
}

// --- the guide ------------------------------------------------------------------------------

void QX_AutoSetup_frm::Form_Load() {
    app_.autosetup.Setup_Step = 1;
    Run_Step();
    Auto_Setup_Context ctx = Ctx();
    Update_Setup_Figures(ctx);
    Update_Ignition_maxload_label(app_.autosetup.ignition, app_.tables.loads.IgnLoadSensor);
    Show_Boxes();
    Show_Fuel_Labels();
    Show_Captions();
}

void QX_AutoSetup_frm::Autosetup_next(int index) {
    quorlen::Autosetup_next(app_.autosetup.Setup_Step, index);
    Run_Step();
}

void QX_AutoSetup_frm::Command1_Click() {
    Guide_Restart(app_.autosetup.Setup_Step);
    Run_Step();
}

void QX_AutoSetup_frm::Command2_Click() {
    if (hooks_.Open_Manual) hooks_.Open_Manual();
}

void QX_AutoSetup_frm::Show_Step(int step) {
    app_.autosetup.Setup_Step = step;
    Run_Step();
}

void QX_AutoSetup_frm::Run_Step() {
    const int n = app_.autosetup.Setup_Step;
    const Guide_Step* step = Guide_Step_Of(n);
    if (step == nullptr) return;
    QStringList lines;
    for (const char* line : Guide_Lines(n))
        lines << Tr("Setup_Guide", line);
    Autosetup_guidetext_->setPlainText(lines.join("\n\n"));
    Step_label_->setText(QStringLiteral("Step %1 / %2").arg(n).arg(Guide_Steps));

    auto close = [this](const char* name) {
        if (hooks_.Form_Exists(name)) hooks_.Form(name)->hide();
    };
    if (step->close_sensor_editor) close("QX_Sensor_Editor");
    if (step->close_settings) close("QX_settings");
    switch (step->form) {
    case Guide_Form::Sensor_Editor:
        if (QWidget* form = hooks_.Form("QX_Sensor_Editor")) {
            if (auto* tabs = form->findChild<QTabWidget*>("SensorEditor_SSTab"))
                tabs->setCurrentIndex(step->tab);
            form->show();
            form->raise();
        }
        break;
    case Guide_Form::Settings:
        hooks_.Show_Settings(step->tab);
        break;
    case Guide_Form::Main:
        hooks_.Show_Main_Tab(step->tab, step->sub_tab);
        break;
    case Guide_Form::None:
        break;
    }
    if (step->frame != Guide_Frame::Keep) {
        AutoFuel_frame_->setVisible(step->frame == Guide_Frame::Fuel);
        AutoIgnition_frame_->setVisible(step->frame == Guide_Frame::Ignition);
        Generate_status_label_->clear();
    }
    if (step->ignition_captions) {
        Update_Ignition_maxload_label(app_.autosetup.ignition, app_.tables.loads.IgnLoadSensor);
        Show_Captions();
    }
    raise();
}

// --- the generators -------------------------------------------------------------------------

Auto_Setup_Context QX_AutoSetup_frm::Ctx() {
    return app_.Auto_Setup(hooks_.Dialogs());
}

void QX_AutoSetup_frm::Box_Edited(QLineEdit* box, std::string* text, Box_Feeds feeds) {
    *text = box->text().toStdString();
    Auto_Fuel& fuel = app_.autosetup.fuel;
    if (feeds == Box_Feeds::Nothing) return;
    if (feeds == Box_Feeds::Air) Update_Air_hp_label(fuel, app_.log);
    Update_Fuel_hp_label(fuel, app_.engine.Sequential_Fuel, app_.log);
    Show_Boxes();
    Show_Fuel_Labels();
    Show_Captions();
}

void QX_AutoSetup_frm::Show_Boxes() {
    for (auto& [box, text] : boxes_) {
        const QString shown = Text(*text);
        if (box->text() == shown) continue;
        // The form turns commas into points in some boxes; the cursor stays where it was.
        const int cursor = box->cursorPosition();
        box->setText(shown);
        box->setCursorPosition(cursor);
    }
    if (QAbstractButton* option = FuelType_option_->button(app_.autosetup.fuel.in.FuelType_option))
        option->setChecked(true);
}

void QX_AutoSetup_frm::Show_Fuel_Labels() {
    const Auto_Fuel_Labels& l = app_.autosetup.fuel.labels;
    auto show = [this](const char* name, const std::string* texts, int first, int count) {
        for (int k = 0; k < count; ++k)
            labels_[Indexed(name, first + k).toStdString()]->setText(Text(texts[k]));
    };
    show("Air_hp_label", l.Air_hp_label.data(), 0, 2);
    show("Fuel_hp_label", l.Fuel_hp_label.data(), 0, 2);
    show("Max_fuel_lable", l.Max_fuel_lable.data(), 0, 4);
    show("Under_fuel_lable", l.Under_fuel_lable.data(), 0, 2);
    labels_["Sequential_Fuel_label"]->setText(Text(app_.engine.Setup_Fuel_label));
}

void QX_AutoSetup_frm::Show_Captions() {
    const Auto_Ignition& ign = app_.autosetup.ignition;
    for (std::size_t k = 0; k < ign.captions.size(); ++k)
        ignition_captions_[k]->setText(Text(ign.captions[k]));
    const int load = app_.tables.loads.IgnLoadSensor;
    const bool known = load == Ign_Load_MAP || load == Ign_Load_Throttle;
    QString text = QStringLiteral("Ignition load: %1. Max rpm (the fuel frame's max): %2")
                       .arg(Text(Load_Input_Name(load)), Text(app_.autosetup.fuel.in.MaxRPM_txt[Top_Point]));
    if (!known) text += "\nThe generator knows MAP and throttle loads only.";
    Ign_load_label_->setText(text);
}

void QX_AutoSetup_frm::Show_Outcome(const Generate_Outcome& outcome) {
    Generate_status_label_->setStyleSheet(outcome.made ? QString() : "color: #b00000;");
    Generate_status_label_->setText(Text(outcome.message));
}

void QX_AutoSetup_frm::Generate_Autofuel_cmd_Click() {
    Auto_Setup_Context ctx = Ctx();
    Generate_Outcome outcome = Generate_Autofuel_cmd(ctx, hooks_.Update_All);
    Show_Boxes();
    Show_Fuel_Labels();
    Show_Outcome(outcome);
}

void QX_AutoSetup_frm::Generate_Autoignition_cmd_Click() {
    Auto_Setup_Context ctx = Ctx();
    Generate_Outcome outcome = Generate_Autoignition_cmd(ctx, hooks_.Update_All);
    if (outcome.made && hooks_.Select_Ignition_First_Cell) hooks_.Select_Ignition_First_Cell();
    Show_Boxes();
    Show_Outcome(outcome);
}

void QX_AutoSetup_frm::Follow_Image() {
    Auto_Setup_Context ctx = Ctx();
    Auto_Setup_Follow_Image(ctx);
    Show_Fuel_Labels();
    Show_Captions();
}

} // namespace quorlen::ui
