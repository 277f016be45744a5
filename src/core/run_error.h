#pragma once
// Errors that a step of a procedure can raise. The program never lets one reach a caller:
// Proc_Guard catches it, the procedure carries on with its next step, and the last error is
// written to the diagnostics log as one line. The numbers and words are the ones support
// has learnt to search for in Debug_file.log.

#include <stdexcept>
#include <string>

namespace quorlen {

class Run_Error : public std::runtime_error {
public:
    Run_Error(int number, const std::string& description)
        : std::runtime_error(description), number_(number) {}
    int number() const { return number_; }

private:
    int number_;
};

namespace errors {
inline Run_Error Overflow() {
    return {6, "Overflow"};
}
inline Run_Error Subscript_Out_Of_Range() {
    return {9, "Subscript out of range"};
}
inline Run_Error Type_Mismatch() {
    return {13, "Type mismatch"};
}
inline Run_Error Bad_File_Name_Or_Number() {
    return {52, "Bad file name or number"};
}
inline Run_Error File_Not_Found() {
    return {53, "File not found"};
}
inline Run_Error Input_Past_End_Of_File() {
    return {62, "Input past end of file"};
}
inline Run_Error Permission_Denied() {
    return {70, "Permission denied"};
}
inline Run_Error Path_File_Access_Error() {
    return {75, "Path/File access error"};
}
inline Run_Error Path_Not_Found() {
    return {76, "Path not found"};
}
} // namespace errors

} // namespace quorlen
