#include "ui/engine_config_box.h"

#include "app/app_context.h"
#include "app/tune_tools.h"
#include "ui/qt_dialogs.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

// The frame's colours are kept as the form's colour values: 0x00BBGGRR, or a system colour
// with the top bit set.
QString Back_Style(std::uint32_t colour) {
    if (colour & 0x80000000u) return {};
    const QColor c(static_cast<int>(colour & 0xff), static_cast<int>((colour >> 8) & 0xff),
                   static_cast<int>((colour >> 16) & 0xff));
    return QStringLiteral("QGroupBox#Engine_Config_frame { background-color: %1; }").arg(c.name());
}

const char* const List_Labels[Engine_List_Count] = {"Cylinders",    "Ignition type", "Fuel system",
                                                    "Crank sensor", "Cam sensor 1",  "Cam sensor 2",
                                                    "TDC sensor",   "Firing order",  "Car example"};

QLineEdit* Text(QWidget* parent, const QString& name) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setReadOnly(true);
    return edit;
}

void Set_Items(QComboBox* combo, const std::vector<std::string>& items, int index) {
    QStringList wanted;
    for (const std::string& item : items)
        wanted << From_8bit(item);
    bool same = combo->count() == wanted.size();
    for (int i = 0; same && i < combo->count(); ++i)
        same = combo->itemText(i) == wanted[i];
    if (!same) {
        combo->clear();
        combo->addItems(wanted);
    }
    combo->setCurrentIndex(index);
}

} // namespace

Engine_Config_Box::Engine_Config_Box(App_Context& app, std::function<void()> update_all, QWidget* parent)
    : QGroupBox(parent), app_(app), update_all_(std::move(update_all)) {
    setObjectName("Engine_Config_frame");
    auto* layout = new QVBoxLayout(this);

    auto* current = new QHBoxLayout;
    current->addWidget(new QLabel("Current:", this));
    Engine_setup_combo_ = new QComboBox(this);
    Engine_setup_combo_->setObjectName("Engine_setup_combo");
    Engine_setup_combo_->setMaxVisibleItems(20);
    Engine_setup_combo_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    Engine_setup_combo_->setMinimumContentsLength(40);
    connect(Engine_setup_combo_, &QComboBox::activated, this, [this](int index) {
        Run([&](Engine_Config_Context& c) { Engine_setup_combo_Click(c, index); });
    });
    current->addWidget(Engine_setup_combo_, 1);
    layout->addLayout(current);

    auto* grid = new QGridLayout;
    for (int i = 0; i < Engine_List_Count; ++i) {
        const auto list = static_cast<Engine_List>(i);
        auto* combo = new QComboBox(this);
        combo->setObjectName(Engine_List_Name(list));
        combo->setMinimumContentsLength(12);
        combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        connect(combo, &QComboBox::activated, this, [this, list](int index) {
            Run([&](Engine_Config_Context& c) { Engine_List_Click(c, list, index); });
        });
        lists_[static_cast<std::size_t>(i)] = combo;
        const int row = i < 5 ? 0 : 2;
        const int col = i < 5 ? i : i - 5;
        grid->addWidget(new QLabel(List_Labels[i], this), row, col);
        grid->addWidget(combo, row + 1, col, 1, list == Engine_List::Car_Example ? 2 : 1);
    }
    layout->addLayout(grid);

    auto* texts = new QGridLayout;
    Cylinder_info_txt_ = Text(this, "Cylinder_info_txt");
    texts->addWidget(Cylinder_info_txt_, 0, 0, 1, 4);
    auto labelled = [&](const char* label, QLineEdit* edit, int row, int col) {
        texts->addWidget(new QLabel(label, this), row, col);
        texts->addWidget(edit, row, col + 1);
    };
    for (int k = 0; k < 2; ++k) {
        Ign_Channel_order_info_txt_[static_cast<std::size_t>(k)] =
            Text(this, QStringLiteral("Ign_Channel_order_info_txt(%1)").arg(k));
        Fuel_Channel_order_info_txt_[static_cast<std::size_t>(k)] =
            Text(this, QStringLiteral("Fuel_Channel_order_info_txt(%1)").arg(k));
    }
    labelled("Ign firing order:", Ign_Channel_order_info_txt_[0], 1, 0);
    labelled("Ign channel to cyl:", Ign_Channel_order_info_txt_[1], 1, 2);
    labelled("Fuel firing order:", Fuel_Channel_order_info_txt_[0], 2, 0);
    labelled("Fuel channel to cyl:", Fuel_Channel_order_info_txt_[1], 2, 2);
    FW_info_txt_ = Text(this, "FW_info_txt");
    Selected_Engine_config_row_txt_ = Text(this, "Selected_Engine_config_row_txt");
    Selected_Engine_config_row_txt_->setMaximumWidth(60);
    labelled("Needed FW:", FW_info_txt_, 3, 0);
    labelled("New:", Selected_Engine_config_row_txt_, 3, 2);
    layout->addLayout(texts);

    auto* bottom = new QHBoxLayout;
    Crank_angle_example_label_ = new QLabel(this);
    Crank_angle_example_label_->setObjectName("Crank_angle_example_label");
    bottom->addWidget(Crank_angle_example_label_);
    bottom->addStretch();
    auto button = [&](const char* name, const char* caption, void (*action)(Engine_Config_Context&)) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, [this, action] { Run(action); });
        bottom->addWidget(b);
        return b;
    };
    Init_Selection_guide_ = button("Init_Selection_guide", "EDIT", &Init_Selection_guide_Click);
    Engine_Config_OK_ = button("Engine_Config_OK", "APPLY", &Engine_Config_OK_Click);
    Engine_Config_Cancle_ = button("Engine_Config_Cancle", "CANCEL", &Engine_Config_Cancle_Click);
    layout->addLayout(bottom);
    Sync();
}

Engine_Config_Context Engine_Config_Box::Ctx() {
    return Engine_Context(app_, frame_, update_all_);
}

template <class F>
void Engine_Config_Box::Run(F&& action) {
    if (syncing_) return;
    Engine_Config_Context c = Ctx();
    action(c);
    Sync();
}

void Engine_Config_Box::Init() {
    Engine_Config_Context c = Ctx();
    Fill_Engine_setup_combo(c);
    frame_.Engine_setup_combo_index = -1;
    Show_Engine_Config_Of_Image(c);
    Sync();
}

void Engine_Config_Box::Follow_Image() {
    Engine_Config_Context c = Ctx();
    Show_Engine_Config_Of_Image(c);
    Sync();
}

void Engine_Config_Box::Sync() {
    syncing_ = true;
    const Engine_Config_Frame& f = frame_;
    {
        const QSignalBlocker block(Engine_setup_combo_);
        Set_Items(Engine_setup_combo_, f.Engine_setup_combo, f.Engine_setup_combo_index);
    }
    Engine_setup_combo_->setEnabled(!f.Engine_setup_combo_Locked);
    for (int i = 0; i < Engine_List_Count; ++i) {
        QComboBox* combo = lists_[static_cast<std::size_t>(i)];
        const QSignalBlocker block(combo);
        const Engine_List_Box& list = f.List(static_cast<Engine_List>(i));
        Set_Items(combo, list.items, list.index);
        // A question not yet reached shows what it will ask.
        combo->setPlaceholderText(f.Guide_Active() ? Engine_List_Prompt(static_cast<Engine_List>(i)) : "");
        // The lists answer the guide's questions; outside it they only show the layout.
        combo->setEnabled(f.Guide_Active());
    }
    Cylinder_info_txt_->setText(From_8bit(f.Cylinder_info_txt));
    for (std::size_t k = 0; k < 2; ++k) {
        Ign_Channel_order_info_txt_[k]->setText(From_8bit(f.Ign_Channel_order_info_txt[k]));
        Fuel_Channel_order_info_txt_[k]->setText(From_8bit(f.Fuel_Channel_order_info_txt[k]));
    }
    FW_info_txt_->setText(From_8bit(f.FW_info_txt));
    Selected_Engine_config_row_txt_->setText(From_8bit(f.Selected_Engine_config_row_txt));
    Crank_angle_example_label_->setText(From_8bit(f.Crank_angle_example_label));
    // A row shown anew says its recommendation once; the teeth slider may say its own after.
    if (f.Fuel_teeth_recomend != teeth_shown_) {
        teeth_shown_ = f.Fuel_teeth_recomend;
        app_.pages.Fuel_teeth_recomend = f.Fuel_teeth_recomend;
    }
    setTitle(From_8bit(f.Caption));
    setStyleSheet(Back_Style(f.BackColor));
    Engine_Config_OK_->setEnabled(f.Engine_Config_OK_Enabled);
    syncing_ = false;
}

} // namespace quorlen::ui
