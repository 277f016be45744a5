// The .qxo file: what the capture writes, what the reader makes of whole, cut-off and
// damaged files, and the stream's framing bytes that the reader does not let through as pulses.

#include "hslog/osc_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace quorlen {
namespace {

using test::Read_File;
using test::Write_File;

std::string Lines(std::initializer_list<const char*> lines) {
    std::string text;
    for (const char* line : lines)
        text += std::string(line) + "\r\n";
    return text;
}

TEST(OscFile, WriterPutsEachByteOnALineAndTheRateBehindTheCount) {
    test::Temp_Dir dir;
    const std::string path = dir.File("a.qxo");
    Osc_Writer writer;
    std::string error;
    ASSERT_TRUE(writer.Open(path, error)) << error;
    writer.Write(std::string("\x07\x00", 2));
    // Nothing waits in memory: what was written is in the file before the capture ends.
    EXPECT_EQ(Read_File(path), Lines({"[Log_Osc_Data]", "007", "000"}));
    writer.Write("\xff");
    ASSERT_TRUE(writer.Close(62500));
    EXPECT_EQ(Read_File(path), Lines({"[Log_Osc_Data]", "007", "000", "255", "[End_Log_Osc_Data]",
                                      "Number of rows: 3", "Sample rate: 62500"}));

    const auto trace = Read_Osc_File(path, error);
    ASSERT_TRUE(trace) << error;
    EXPECT_EQ(trace->samples, (std::vector<std::uint8_t>{7, 0, 255}));
    EXPECT_EQ(trace->sample_rate, 62500);
    EXPECT_TRUE(trace->rate_from_file);
    EXPECT_FALSE(trace->cut_off);
    EXPECT_EQ(trace->rows_stated, 3);
    EXPECT_EQ(Osc_Trace_Notes(*trace), "");
}

TEST(OscFile, WriterNeverReplacesAFileThatIsThere) {
    test::Temp_Dir dir;
    const std::string path = dir.File("kept.qxo");
    Write_File(path, "someone's capture");
    Osc_Writer writer;
    std::string error;
    EXPECT_FALSE(writer.Open(path, error));
    EXPECT_NE(error.find("kept.qxo"), std::string::npos);
    EXPECT_EQ(Read_File(path), "someone's capture");
}

TEST(OscFile, ACaptureWithoutItsEndMarkOpensWithWhatIsThere) {
    std::string error;
    // The program died in the middle of a line: the half sample is not taken.
    auto trace = Read_Osc_Text(Lines({"[Log_Osc_Data]", "001", "003"}) + "00", error, 62500);
    ASSERT_TRUE(trace) << error;
    EXPECT_TRUE(trace->cut_off);
    EXPECT_EQ(trace->samples, (std::vector<std::uint8_t>{1, 3}));
    EXPECT_EQ(trace->sample_rate, 62500); // the caller's guess, said in the notes
    EXPECT_EQ(Osc_Trace_Notes(*trace),
              "The capture was cut off: there is no [End_Log_Osc_Data] line. The 2 "
              "samples before the cut are shown. Times assume 62500 samples a second.");

    // A last line whose digits are all there counts even without its line end.
    trace = Read_Osc_Text(Lines({"[Log_Osc_Data]", "001"}) + "250", error);
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->samples, (std::vector<std::uint8_t>{1, 250}));

    // Only the mark line: nothing captured yet.
    trace = Read_Osc_Text("[Log_Osc_Data]", error);
    ASSERT_TRUE(trace);
    EXPECT_TRUE(trace->cut_off);
    EXPECT_EQ(trace->Count(), 0);
}

TEST(OscFile, DamageEndsTheSamplesWhereItStandsAndIsNamed) {
    std::string error;
    const auto trace =
        Read_Osc_Text(Lines({"[Log_Osc_Data]", "001", "256", "002", "[End_Log_Osc_Data]"}), error);
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->samples, (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(trace->bad_line, 3);
    EXPECT_EQ(Osc_Trace_Notes(*trace).rfind("Line 3 is not a sample", 0), 0u);

    // The count behind the mark disagrees with the lines.
    const auto short_count =
        Read_Osc_Text(Lines({"[Log_Osc_Data]", "001", "[End_Log_Osc_Data]", "Number of rows: 5"}), error);
    ASSERT_TRUE(short_count);
    EXPECT_EQ(Osc_Trace_Notes(*short_count), "The file says 5 samples but holds 1.");
    EXPECT_FALSE(short_count->rate_from_file);
    EXPECT_EQ(short_count->sample_rate, Default_Sample_Rate);
}

TEST(OscFile, NotAHighSpeedLogWithoutItsMarkLine) {
    std::string error;
    EXPECT_FALSE(Read_Osc_Text("[log_data]\r\n001\r\n", error));
    EXPECT_EQ(error, "Not a high-speed log file: no [Log_Osc_Data] line");
    // The mark inside another line is not the mark.
    EXPECT_FALSE(Read_Osc_Text("x[Log_Osc_Data]\r\n001\r\n", error));
    EXPECT_FALSE(Read_Osc_File("/nonexistent/dir/x.qxo", error));
    EXPECT_NE(error.find("x.qxo"), std::string::npos);

    // A pipe nobody writes to would hold the window for ever; a folder would read as nothing.
    test::Temp_Dir dir;
    const std::string pipe = dir.File("pipe.qxo");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(Read_Osc_File(pipe, error));
    EXPECT_EQ(error, pipe + " is a named pipe (FIFO)");
    EXPECT_FALSE(Read_Osc_File(dir.File(""), error));
    EXPECT_NE(error.find("is a folder"), std::string::npos);
}

TEST(OscFile, TheEchoAndTheCheckBytesHoldTheLevelsAroundThem) {
    Osc_Trace trace;
    trace.samples.assign(2 * Osc_Check_Interval + 10, 0x11);
    trace.samples[0] = 'd';
    trace.samples[1] = 0x12;
    trace.samples[1 + Osc_Check_Interval] = 255;     // byte 11522
    trace.samples[1 + 2 * Osc_Check_Interval] = 200; // not a check byte of 255: a sample
    trace.samples[Osc_Check_Interval] = 0x13;        // the sample before the first check
    Hold_Framing_Bytes(trace);
    EXPECT_EQ(trace.samples[0], 0x12);
    EXPECT_EQ(trace.samples[1 + Osc_Check_Interval], 0x13);
    EXPECT_EQ(trace.samples[1 + 2 * Osc_Check_Interval], 200);
    EXPECT_EQ(trace.held, 2);
}

} // namespace
} // namespace quorlen
