#include "tables/undo_list.h"

#include <algorithm>

namespace quorlen {

namespace {
void Restore(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    const auto& level = undo.UndoList[static_cast<std::size_t>(undo.UndoIndex)];
    std::copy(level.begin(), level.end(), image.CardByte.begin());
    if (update_all) update_all();
    undo.UndoBusy = false;
}
} // namespace

void save_to_undolist(Undo_List& undo, const Settings_Image& image) {
    if (undo.UndoBusy) return;
    auto& level = undo.UndoList[static_cast<std::size_t>(undo.UndoIndex)];
    std::copy_n(image.CardByte.begin(), Undo_List::Snapshot_Bytes, level.begin());
    ++undo.UndoIndex;
    if (undo.UndoIndex == Undo_List::Levels) {
        undo.UndoIndex = Undo_List::Levels - 1;
        // The oldest snapshot falls out; the top level keeps its copy as well.
        for (std::size_t i = 1; i < Undo_List::Levels; ++i)
            undo.UndoList[i - 1] = undo.UndoList[i];
    }
}

void edit_undo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    if (undo.UndoIndex <= 0) return;
    undo.UndoBusy = true;
    --undo.UndoIndex;
    Restore(undo, image, update_all);
}

void edit_redo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    if (undo.UndoIndex >= Undo_List::Levels - 1) return;
    undo.UndoBusy = true;
    ++undo.UndoIndex;
    Restore(undo, image, update_all);
}

} // namespace quorlen
