#include "core/identity.h"

namespace quorlen {

void Set_custom_logfilename(Program_State& state) {
    if (state.Product_Variant == 2) state.Log_Settings_File_Name = "RZ400_800M3_Default_Log_Settings.qxl";
}

void Set_Program_Identity(Program_State& state, int brand) {
    if (brand == 0 && state.Product_Variant == 2) {
        state.Comm_Tab0_Caption = "RZ-box";
        state.Comm_Tab1_Caption = "Mapchip";
        state.Program_Title = "VELMORA RZ400/RZ800M3 Interface Software - ";
        state.Product_Title = "RZ400/RZ800M3 Interface Software";
        state.Company_Line = "Velmora Engine Electronics";
        state.Ini_File_Name = "RZ400_800M3.ini";
        state.Manual_Link = "Manual/RZ400_800M3_Manual.pdf";
        state.Web_Link = "https://www.velmora-engine.example";
        state.Help_wwwlink_Caption = "Goto www.velmora-engine.example";
    }
    state.Brand_Variant = brand;
    Set_custom_logfilename(state);
}

} // namespace quorlen
