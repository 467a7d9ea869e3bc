#include "core/z_exception.h"
#include "core/value_displays.h"
#include "core/z_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace halvern {

TEST(FormatTest, DoublesTakeFixedDecimalsBelowTenAndIntegersSignHexadecimalAndPadding)
{
    EXPECT_EQ(ZFormat("{+0.2} dB").arg(0.0).text(), "0.00 dB");
    EXPECT_EQ(ZFormat("{+0.2} dB").arg(0.001).text(), "+0.00 dB");
    EXPECT_EQ(ZFormat("{+0.2} dB").arg(1e-21).text(), "0.00 dB");
    EXPECT_EQ(ZFormat("{0}").arg(1.5).text(), "1.5000");
    EXPECT_EQ(ZFormat("{0;.1} kHz").arg(12.345).text(), "12.3 kHz");
    EXPECT_EQ(ZFormat("{0.12}").arg(1.0 / 3.0).text(), "0.333333333333");
    EXPECT_EQ(ZFormat("{0.12}").arg(1234.5).text(), "1234.5");
    EXPECT_EQ(ZFormat("{0.10}").arg(2.0 / 3.0).text(), "0.6666666667");
    EXPECT_EQ(ZFormat("{0:04}-{1:02}-{2:02}").arg(2024).arg(3).arg(7).text(), "2024-03-07");
    EXPECT_EQ(ZFormat("{0 4}|").arg(42).text(), "  42|");
    EXPECT_EQ(ZFormat("{0x04}").arg(255).text(), "00ff");
    EXPECT_EQ(ZFormat("{+0}").arg(5).text(), "+5");
    EXPECT_EQ(ZFormat("{+0}").arg(0).text(), "0");
    EXPECT_EQ(ZFormat("{0}").arg(std::numeric_limits<int64_t>::min()).text(), "-9223372036854775808");
}

TEST(FormatTest, TemplateEscapesOrderAndRepeatedArguments)
{
    EXPECT_EQ(ZFormat("{{0}}").text(), "{0}");
    EXPECT_EQ(ZFormat("a}}b}").text(), "a}b");
    EXPECT_EQ(ZFormat("{1} before {0}").arg("x").arg("y").text(), "y before x");
    EXPECT_EQ(ZFormat("{0}{1} ({2+} cents)").arg("C#").arg(4).arg(12).text(), "C#4 (+12 cents)");
    EXPECT_EQ(ZFormat("{0.1} or {0.3}").arg(0.5).text(), "0.5 or 0.500");
    EXPECT_EQ(ZFormat("[{0}]").text(), "[]");
    EXPECT_NO_THROW(ZFormat("{31}"));
    EXPECT_THROW(ZFormat("{32}"), ZException);
    for (const char* unterminated : {"{0", "value {0;.2", "{"})
        EXPECT_THROW(ZFormat{unterminated}, ZException) << unterminated;
}

TEST(FormatTest, ScanningExtractsArgumentTexts)
{
    std::vector<std::string> arguments;
    EXPECT_TRUE(ZScanFormat("{0} dB", "  7.5 \t dB  ", arguments));
    EXPECT_EQ(arguments, std::vector<std::string>{"7.5"});
    const std::string pitch = ZFormat("{0}{1} ({2+} cents)").arg("C#4").arg("").arg(int32_t{12}).text();
    EXPECT_EQ(pitch, "C#4 (+12 cents)");
    EXPECT_TRUE(ZScanFormat("{0}{1} ({2+} cents)", pitch, arguments));
    EXPECT_EQ(arguments, (std::vector<std::string>{"C#4", "", "+12"}));
    EXPECT_TRUE(ZScanFormat("{1}/{0}", "3/4", arguments));
    EXPECT_EQ(arguments, (std::vector<std::string>{"4", "3"}));
    EXPECT_TRUE(ZScanFormat("a {0}", "a3", arguments)); // format whitespace matches none
    EXPECT_EQ(arguments, std::vector<std::string>{"3"});
    EXPECT_TRUE(ZScanFormat("{{{0}", "{5", arguments));
    EXPECT_EQ(arguments, std::vector<std::string>{"5"});
    EXPECT_TRUE(ZScanFormat("{0} dB", "12", arguments)); // the end of the input ends the scan
    EXPECT_EQ(arguments, std::vector<std::string>{"12"});
    EXPECT_TRUE(ZScanFormat("{0} dB", "", arguments));
    EXPECT_TRUE(arguments.empty());
    EXPECT_FALSE(ZScanFormat("{0} dB", "7.5 Hz", arguments));
    EXPECT_FALSE(ZScanFormat("{{{0}", "5", arguments));
}

namespace {

template <typename Parser>
double Parsed(Parser parse, std::string_view text)
{
    double value = -1.0;
    return parse(text, value) ? value : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

TEST(FormatTest, ParsingNumbersAndFrequencyPrecisionFollowingMagnitude)
{
    const auto number = [](std::string_view text, double& value) { return ZParseNumber(text, value); };
    EXPECT_EQ(Parsed(number, "+2.5e1xyz"), 25.0);
    EXPECT_EQ(Parsed(number, "  -0.5"), -0.5);
    double value = 7.0;
    for (const char* refused : {"abc", "", "nan", "inf"})
        EXPECT_FALSE(ZParseNumber(refused, value)) << refused;
    EXPECT_EQ(value, 7.0);
    const std::pair<double, const char*> cases[] = {
        {0.0000099, "0 Hz"}, {0.00001, "0.0000 Hz"}, {-0.5, "-0.5000 Hz"}, {1.0, "1.00 Hz"},  {10.0, "10.0 Hz"},
        {100.5, "101 Hz"},   {-100.5, "-100 Hz"},    {9999.5, "10000 Hz"}, {12345.0, "12.3 kHz"}, {-20000.0, "-20.0 kHz"}};
    for (const auto& [hertz, text] : cases)
        EXPECT_EQ(FormatFrequency(hertz), text) << hertz;
}

TEST(ValueDisplays, PercentAndTimeTextsAndTheirTypedForms)
{
    EXPECT_EQ(FormatPercent(0.255) + FormatPercent(1.0), "25.5 %100.0 %");
    EXPECT_EQ(FormatTime(0.0015) + "|" + FormatTime(0.999), "1.5 ms|999.0 ms");
    EXPECT_EQ(FormatTime(1.0) + "|" + FormatTime(29.9), "1.00 s|29.90 s");
    EXPECT_DOUBLE_EQ(Parsed(ParsePercent, "25.5 %"), 0.255);
    EXPECT_DOUBLE_EQ(Parsed(ParseTime, "250"), 0.25); // typed times are milliseconds
    EXPECT_DOUBLE_EQ(Parsed(ParseTime, "2.50 s"), 2.5);
    EXPECT_DOUBLE_EQ(Parsed(ParseTime, " 999.0 MS "), 0.999);
    EXPECT_DOUBLE_EQ(Parsed(ParseLogFrequency, "10.0 kHz"), 4.0);
    EXPECT_DOUBLE_EQ(Parsed(ParseLogFrequency, "100 Hz"), 2.0);
    for (const char* refused : {"soon", "3 min"})
        EXPECT_TRUE(std::isnan(Parsed(ParseTime, refused))) << refused;
    EXPECT_TRUE(std::isnan(Parsed(ParseLogFrequency, "100 dB")));
}

} // namespace halvern
