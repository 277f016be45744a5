#include "tables/undo_list.h"

#include <algorithm>

namespace quorlen {

namespace {

using Snapshot = Undo_List::Snapshot;

Snapshot& Level(Undo_List& undo, int index) {
    return undo.UndoList[static_cast<std::size_t>(index)];
}

const Snapshot& Level(const Undo_List& undo, int index) {
    return undo.UndoList[static_cast<std::size_t>(index)];
}

bool Same(const Snapshot& level, const Settings_Image& image) {
    return std::equal(level.begin(), level.end(), image.CardByte.begin());
}

void Store(Snapshot& level, const Settings_Image& image) {
    std::copy_n(image.CardByte.begin(), level.size(), level.begin());
}

// One level up; past the last level the oldest snapshot falls out and everything moves down.
void Advance(Undo_List& undo) {
    ++undo.UndoIndex;
    if (undo.UndoIndex < Undo_List::Levels) return;
    std::move(undo.UndoList.begin() + 1, undo.UndoList.end(), undo.UndoList.begin());
    undo.UndoIndex = Undo_List::Levels - 1;
    undo.UndoTop = std::max(undo.UndoTop - 1, 0);
}

bool On_Stored_Level(const Undo_List& undo) {
    return undo.UndoIndex < undo.UndoTop;
}

// After an undo or a redo the list stands on a level. If the image has moved away from it
// without a snapshot, that level becomes the snapshot before the change, and the image on
// show is the newest state.
void Settle(Undo_List& undo, const Settings_Image& image) {
    if (!On_Stored_Level(undo) || Same(Level(undo, undo.UndoIndex), image)) return;
    Advance(undo);
    undo.UndoTop = undo.UndoIndex;
}

void Restore(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    const Snapshot& level = Level(undo, undo.UndoIndex);
    for (std::size_t i = 0; i < level.size(); ++i) {
        if (image.CardByte[i] == level[i]) continue;
        image.CardByte[i] = level[i];
        image.ChangedByte[i] = Changed_Mark;
    }
    if (update_all) update_all();
}

// The restore runs under the guard, and the guard comes down whatever the redraw does.
template <class F>
void Busy(Undo_List& undo, F&& restore) {
    undo.UndoBusy = true;
    try {
        restore();
    } catch (...) {
        undo.UndoBusy = false;
        throw;
    }
    undo.UndoBusy = false;
}

} // namespace

void save_to_undolist(Undo_List& undo, const Settings_Image& image) {
    if (undo.UndoBusy) return;
    Settle(undo, image);
    if (On_Stored_Level(undo)) {
        // The image is that level's already: it is the snapshot, and the steps ahead go.
        Advance(undo);
        undo.UndoTop = undo.UndoIndex;
        return;
    }
    if (undo.UndoIndex > 0 && Same(Level(undo, undo.UndoIndex - 1), image)) return;
    Store(Level(undo, undo.UndoIndex), image);
    Advance(undo);
    undo.UndoTop = undo.UndoIndex;
}

void edit_undo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    if (undo.UndoBusy) return;
    Settle(undo, image);
    if (undo.UndoIndex <= 0) return;
    if (!On_Stored_Level(undo)) {
        // The image on show becomes the level that redo comes back to.
        if (Same(Level(undo, undo.UndoIndex - 1), image))
            --undo.UndoIndex;
        else
            Store(Level(undo, undo.UndoIndex), image);
        undo.UndoTop = undo.UndoIndex + 1;
        if (undo.UndoIndex == 0) return;
    }
    --undo.UndoIndex;
    Busy(undo, [&] { Restore(undo, image, update_all); });
}

void edit_redo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all) {
    if (undo.UndoBusy) return;
    Settle(undo, image);
    if (undo.UndoIndex + 1 >= undo.UndoTop) return;
    ++undo.UndoIndex;
    Busy(undo, [&] { Restore(undo, image, update_all); });
}

bool Can_Undo(const Undo_List& undo, const Settings_Image& image) {
    if (On_Stored_Level(undo)) {
        // Moved away from the level without a snapshot: that level is a step back.
        return !Same(Level(undo, undo.UndoIndex), image) || undo.UndoIndex > 0;
    }
    if (undo.UndoIndex == 0) return false;
    return undo.UndoIndex > 1 || !Same(Level(undo, 0), image);
}

bool Can_Redo(const Undo_List& undo, const Settings_Image& image) {
    return undo.UndoIndex + 1 < undo.UndoTop && Same(Level(undo, undo.UndoIndex), image);
}

void Clear_Undo_List(Undo_List& undo) {
    undo.UndoIndex = 0;
    undo.UndoTop = 0;
}

void Drop_Redo(Undo_List& undo) {
    if (On_Stored_Level(undo)) undo.UndoTop = undo.UndoIndex + 1;
}

} // namespace quorlen
