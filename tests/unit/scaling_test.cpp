#include "image/scaling.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

class Scaling : public ::testing::Test {
protected:
    void SetUp() override { Init_Cardbyte(image, log); }
    std::string Shown(int address, int byte) { return Scroll_Text(image, address, byte); }

    Settings_Image image;
    Debug_Log log;
};

TEST_F(Scaling, CatalogueRowsShowTheBoxValuesAtTheirEnds) {
    EXPECT_EQ(Shown(17, 255), "16000");
    EXPECT_EQ(Shown(17, 0), "3250");
    EXPECT_EQ(Shown(79, 0), "0.816");
    EXPECT_EQ(Shown(79, 255), "1.632");
    for (int a : {24, 25, 26, 27, 28, 29, 31, 32, 33, 34}) {
        EXPECT_EQ(Shown(a, 128), "0.00") << a;
        EXPECT_EQ(Shown(a, 127), "-0.03") << a; // 0.0256 rounds to the nearer hundredth
    }
    EXPECT_EQ(Shown(97, 0), "-25.6");
    EXPECT_EQ(Shown(213, 255), "15938"); // 15937.5: the tie goes to the even digit
    EXPECT_EQ(Shown(40, 128), "100");    // the PID row that the image defaults set
}

TEST_F(Scaling, StandAloneDefaultsFlagBytesTablesAndChannelTable) {
    EXPECT_EQ(image.CardByte[3], 136);
    EXPECT_EQ(image.CardByte[5], 18);
    EXPECT_EQ(image.CardByte[11], 21);
    EXPECT_EQ(image.CardByte[174], 19);
    EXPECT_EQ(image.CardByte[175], 8);
    EXPECT_EQ(image.CardByte[17], 255); // catalogue default, not cleared
    EXPECT_EQ(image.CardByte[643], 0);  // the cylinder trims lie in the cleared fuel area
    EXPECT_EQ(image.FuelBlockBase, 256);
    EXPECT_EQ(image.IgnBlockBase, 653);
    EXPECT_EQ(image.PwmFuelBase, 46);
    EXPECT_EQ(image.BoostSensor, 3);
    EXPECT_EQ(image.Analog_Channel[12], 12);
    EXPECT_FALSE(log.Is_Open());
}

TEST(ScalingCatalogue, OrderKeepsItsExceptions) {
    auto rows = Scaling_Catalogue();
    std::vector<int> order;
    for (const Scaling_Row& r : rows)
        order.push_back(r.address);
    auto at = [&](int a) { return std::find(order.begin(), order.end(), a) - order.begin(); };
    EXPECT_EQ(std::count(order.begin(), order.end(), 84), 2);
    EXPECT_EQ(at(212), at(173) + 1);
    EXPECT_EQ(at(132), at(212) + 1);
    EXPECT_LT(at(132), at(176));
    EXPECT_EQ(order.front(), 7);
    EXPECT_EQ(order.back(), 652);
    EXPECT_STREQ(Find_Scaling_Row(17)->label, "Fuel and Ign cut RPM      soft ign cut 250rpm earlier");
}

TEST(NumberFormat, TiesGoToTheEvenDigitAndFormatsPad) {
    EXPECT_EQ(Format_Number(2.5, "0"), "2");
    EXPECT_EQ(Format_Number(3.5, "0"), "4");
    EXPECT_EQ(Format_Number(0.125, "0.00"), "0.12");
    EXPECT_EQ(Format_Number(2.675, "0.00"), "2.68"); // the tie the decimal text means
    EXPECT_EQ(Format_Number(-0.01, "0.0"), "0.0");
    EXPECT_EQ(Format_Number(0, "000"), "000");
    EXPECT_EQ(Format_Number(10000, "000"), "10000");
    EXPECT_EQ(Format_Number(-1.5, "0.00"), "-1.50");
    EXPECT_DOUBLE_EQ(Round_Even(-2.5, 0), -2);
    EXPECT_EQ(Decimals_Format(0), "0");
    EXPECT_EQ(Decimals_Format(2), "0.00");
    EXPECT_EQ(Decimals_Format(7), "0.0000");
}

TEST_F(Scaling, SliderMarksOnlyARealChangeAndShowScrollCanKeepItsMaximum) {
    image.CardByte[13] = 100;
    EXPECT_EQ(Settings_scroll_Change(image, 13, 100), "20.0");
    EXPECT_EQ(image.ChangedByte[13], 0);
    EXPECT_EQ(Settings_scroll_Change(image, 13, 101), "20.2");
    EXPECT_EQ(image.ChangedByte[13], 255);
    EXPECT_DOUBLE_EQ(image.CardValue[13], 20.2);

    Scroll_Limits limits;
    show_scroll(limits, 13, 10, 200);
    show_scroll(limits, 13, 20, Keep_Limit);
    EXPECT_EQ(limits.Min[13], 20);
    EXPECT_EQ(limits.Max[13], 200);
}

} // namespace
} // namespace quorlen
