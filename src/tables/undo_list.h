#pragma once
// Undo and redo of everything a tuner changes in the image: each snapshot holds the whole
// image (all 1024 bytes), maps and pages alike, and up to 100 steps are kept.
//
// How a caller uses it:
// - Call save_to_undolist(undo, image) once, right before an edit writes the image, with the
//   image as it stands before the edit. One user action is one call, however many bytes it
//   writes: a button over a selection, a pasted block, a generated map, a preset, a loaded
//   file. Typing takes one call when a new number begins, not one per key.
// - Calling it when nothing has changed since the last snapshot stores nothing, so a caller
//   need not know whether its edit will change anything.
// - Never call it from the redraw (Update_All) or anything that runs while UndoBusy is set:
//   undo and redo restore through the views, and the call then does nothing.
// - An edit after an undo drops the steps that redo would have gone to.
// - Undo and redo mark every byte they change in ChangedByte, so the next write sends it.
//
// An edit that slips through without a snapshot (an old code path) is not lost: the next
// call treats the image it finds as the newest state.

#include "image/settings_image.h"

#include <array>
#include <cstdint>
#include <functional>

namespace quorlen {

struct Undo_List {
    static constexpr int Levels = 101;
    using Snapshot = std::array<std::uint8_t, Image_Size>;
    std::array<Snapshot, Levels> UndoList{};
    // The level at which the next snapshot goes; when it stands below UndoTop, the image on
    // show is that level's (after an undo or a redo).
    int UndoIndex = 0;
    // Levels 0 .. UndoTop-1 hold snapshots; redo never goes past them.
    int UndoTop = 0;
    bool UndoBusy = false;
};

void save_to_undolist(Undo_List& undo, const Settings_Image& image);
// `update_all` refreshes the views after a restore; the snapshot guard stays up meanwhile
// so the redraw doesn't take a snapshot of its own.
void edit_undo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all);
void edit_redo_Click(Undo_List& undo, Settings_Image& image, const std::function<void()>& update_all);

// Whether the menu entries have anything to do for the image on show.
bool Can_Undo(const Undo_List& undo, const Settings_Image& image);
bool Can_Redo(const Undo_List& undo, const Settings_Image& image);

// Forgets every step: the image on show is where undo begins (after the start-up load).
void Clear_Undo_List(Undo_List& undo);

// Forgets the steps ahead, so that redo can't bring back what was just refused (the file
// whose dataset question was answered Cancel).
void Drop_Redo(Undo_List& undo);

} // namespace quorlen
