#include "files/settings_files.h"

#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "files/qxs_format.h"

#include <sys/stat.h>

namespace quorlen {

namespace {

void Call(const std::function<void()>& hook) {
    if (hook) hook();
}

void Call_With(const std::function<void(const std::string&)>& hook, const std::string& text) {
    if (hook) hook(text);
}

Image_Bytes Image_Of(const Settings_Image& image) {
    Image_Bytes bytes{};
    std::copy_n(image.CardByte.begin(), bytes.size(), bytes.begin());
    return bytes;
}

} // namespace

void Save_Settings_File(Settings_Image& image, const std::string& comment, const std::string& path) {
    image.CardByte[250] = 0;
    image.CardByte[251] = 0;
    image.CardByte[255] = static_cast<std::uint8_t>(image.DatasetID);
    Replace_File_Atomically(path, Format_Qxs(Image_Of(image), comment));
}

void Save_Settings_File(Settings_File_Context& ctx, const std::string& path) {
    Save_Settings_File(ctx.image, ctx.texts.txt_File_Description, path);
}

std::string Dataset_Question(int found, int selected, const std::string& what) {
    return what + " has different dataset ID (" + std::to_string(found) +
           ") than currently selected in preferences (" + std::to_string(selected) +
           "), load anyway?\r\n(Dataset ID is not changed.)";
}

std::string Cut_Data_Dir(const std::string& full_name, const std::string& file_title) {
    if (file_title.size() > full_name.size()) return {};
    return full_name.substr(0, full_name.size() - file_title.size());
}

std::string Resolve_In_App_Path(const std::string& app_path, const std::string& name) {
    if (!name.empty() && name.front() == '/') return name;
    return app_path + name;
}

void Set_Title(Settings_File_Context& ctx, const std::string& tail) {
    ctx.texts.Title = ctx.program.Program_Title + tail;
}

std::optional<Qxs_Content> Load_Qxs_File(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    if (static_cast<std::size_t>(st.st_size) > Max_Qxs_File_Size) return std::nullopt;
    try {
        return Parse_Qxs(Read_Whole_File(path));
    } catch (...) {
        return std::nullopt;
    }
}

namespace {

// What File, Open does with the file once it is chosen (`picked` is empty for the default
// settings at start, which are no choice of the user's).
void Open_Chosen(Settings_File_Context& ctx, Proc_Guard& guard, const Picked_File& picked,
                 const std::string& name) {
    const std::string remembered_title = ctx.texts.Title;
    if (name.empty()) return;

    if (name.find(".qxl") != std::string::npos) {
        Call_With(ctx.hooks.Remember_File, name);
        if (ctx.hooks.Open_Log_File) ctx.hooks.Open_Log_File(name);
        return;
    }

    // Name and folder follow the pick before the file is read, and stay even if it fails:
    // File, Save then writes the image on show under the name that was picked.
    guard.Step([&] {
        ctx.files.CurrentFileName = picked.file_title;
        Set_Title(ctx, ctx.files.CurrentFileName);
        ctx.files.CurrentDataDir = Cut_Data_Dir(picked.full_name, picked.file_title);
        ctx.ini.Write_Ini("card_data_dir", ctx.files.CurrentDataDir);
    });

    auto content = Load_Qxs_File(Resolve_In_App_Path(ctx.program.App_Path, name));
    if (!content) {
        ctx.dialogs.Inform(Not_Valid_Qxs_Text);
        ctx.texts.Title = remembered_title;
        return;
    }
    ctx.texts.txt_File_Description = content->comment;
    save_to_undolist(ctx.undo, ctx.image);
    const auto marks = ctx.image.ChangedByte;
    std::copy(content->bytes.begin(), content->bytes.end(), ctx.image.CardByte.begin());

    bool taken = true;
    if (ctx.image.CardByte[255] != ctx.image.DatasetID) {
        Answer answer =
            ctx.dialogs.Ask_Ok_Cancel(Dataset_Question(ctx.image.CardByte[255], ctx.image.DatasetID));
        if (answer != Answer::Ok) {
            // The image goes back as it was, marks and all, and redo can't bring the
            // refused file back.
            edit_undo_Click(ctx.undo, ctx.image, {});
            Drop_Redo(ctx.undo);
            ctx.image.ChangedByte = marks;
            ctx.texts.Title = remembered_title;
            taken = false;
        }
    }
    if (taken && !picked.full_name.empty()) Call_With(ctx.hooks.Remember_File, picked.full_name);
    guard.Step([&] { Call(ctx.hooks.Update_All); });
    guard.Step([&] { Call(ctx.hooks.Update_Tabs); });
    guard.Step([&] { Call(ctx.hooks.Update_All); });
    guard.Step([&] { Call(ctx.hooks.AN_Combo_Click); });
}

} // namespace

void File_open_Click(Settings_File_Context& ctx) {
    Proc_Guard guard(ctx.log, "File open click");
    if (ctx.files.OpenDefaultNow) {
        Open_Chosen(ctx, guard, {}, Default_Settings_File_Name);
        return;
    }
    File_Dialog_Setup setup;
    setup.initial_dir = ctx.files.CurrentDataDir;
    setup.filter = Open_Filter;
    setup.must_exist = true;
    auto chosen = ctx.dialogs.Pick_Open_File(setup);
    if (!chosen) return;
    Open_Chosen(ctx, guard, *chosen, chosen->full_name);
}

void File_open_Named(Settings_File_Context& ctx, const std::string& full_name) {
    Proc_Guard guard(ctx.log, "File open click");
    const std::size_t slash = full_name.rfind('/');
    const Picked_File picked{full_name, slash == std::string::npos ? full_name : full_name.substr(slash + 1)};
    Open_Chosen(ctx, guard, picked, full_name);
}

void File_save_Click(Settings_File_Context& ctx) {
    if (ctx.files.CurrentFileName.empty()) return;
    Proc_Guard guard(ctx.log, "File save click");
    Set_Title(ctx, ctx.files.CurrentFileName);
    guard.Step([&] { ctx.ini.Write_Ini("card_data_dir", ctx.files.CurrentDataDir); });
    guard.Step([&] {
        Save_Settings_File(ctx, Resolve_In_App_Path(ctx.program.App_Path,
                                                    ctx.files.CurrentDataDir + ctx.files.CurrentFileName));
    });
}

void File_save_as_Click(Settings_File_Context& ctx) {
    Proc_Guard guard(ctx.log, "File save as click");
    File_Dialog_Setup setup;
    setup.initial_dir = ctx.files.CurrentDataDir;
    setup.filter = Save_Filter;
    setup.default_ext = "qxs";
    setup.confirm_overwrite = true;
    setup.initial_name = ctx.files.CurrentFileName;
    auto picked = ctx.dialogs.Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;

    ctx.files.CurrentDataDir = Cut_Data_Dir(picked->full_name, picked->file_title);
    ctx.files.CurrentFileName = picked->file_title;
    Set_Title(ctx, ctx.files.CurrentFileName);
    guard.Step([&] { ctx.ini.Write_Ini("card_data_dir", ctx.files.CurrentDataDir); });
    guard.Step([&] {
        Save_Settings_File(ctx, picked->full_name);
        Call_With(ctx.hooks.Remember_File, picked->full_name);
    });
    ctx.files.CurrentFileName = picked->file_title;
    Set_Title(ctx, ctx.files.CurrentFileName);
}

void Save_Current_qxs_2_file(Settings_File_Context& ctx) {
    Proc_Guard guard(ctx.log, "Save Current qxs 2 file");
    guard.Step([&] {
        Replace_File_Atomically(ctx.program.App_Path + Temp_Qxs_File_Name,
                                Format_Qxs(Image_Of(ctx.image), {}, false));
    });
}

void Restore_current_qxs(Settings_File_Context& ctx) {
    Proc_Guard guard(ctx.log, "Restore current qxs");
    guard.Step([&] {
        auto bytes = Parse_Qxs_Numbers(Read_Whole_File(ctx.program.App_Path + Temp_Qxs_File_Name));
        if (!bytes) throw errors::Input_Past_End_Of_File();
        save_to_undolist(ctx.undo, ctx.image);
        std::copy(bytes->begin(), bytes->end(), ctx.image.CardByte.begin());
    });
    guard.Step([&] { Call(ctx.hooks.Update_All); });
}

} // namespace quorlen
