#pragma once
// Undo and redo of the settings pages: snapshots of the first 256 bytes of the image only.
// The maps above 255 are deliberately outside it; the grid operations don't take
// snapshots, so undo steps through page edits only.

#include "image/settings_image.h"

#include <array>
#include <cstdint>
#include <functional>

namespace quorlen {

struct Undo_List {
    static constexpr int Levels = 101;
    static constexpr int Snapshot_Bytes = 256;
    std::array<std::array<std::uint8_t, Snapshot_Bytes>, Levels> UndoList{};
    int UndoIndex = 0;
    bool UndoBusy = false;
};

void save_to_undolist(Undo_List& undo, const Settings_Image& image);
// `update_all` refreshes the views after a restore; the snapshot guard stays up meanwhile
// so the redraw doesn't take a snapshot of its own.
void edit_undo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all);
void edit_redo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all);

} // namespace quorlen
