#include "tools/Calculator.h"

#include <gtest/gtest.h>
#include <limits>

namespace morvane {
namespace {

const QString unsupported = "Error: only numbers and the operators +, -, *, /, (, ) and . are supported.";
const QString notParsed = "Error: the expression could not be parsed";

TEST(CalculatorTest, TellsTheResult)
{
    EXPECT_EQ(Calculator::calculate("3 * (12 - 4)"), "The result is 24.");
    EXPECT_EQ(Calculator::calculate("100 / 8"), "The result is 12.5.");
    EXPECT_EQ(Calculator::calculate("1/3"), "The result is 0.3333333333333333.");
    EXPECT_EQ(Calculator::calculate("  2--3\n"), "The result is 5.");
    EXPECT_EQ(Calculator::calculate("2-+3"), "The result is -1.");
    EXPECT_EQ(Calculator::calculate("--2"), "The result is 2.");
    EXPECT_EQ(Calculator::calculate("+2"), "The result is 2.");
    EXPECT_EQ(Calculator::calculate("2+-3"), "The result is -1.");
}

TEST(CalculatorTest, AnEmptyExpressionIsAnError)
{
    EXPECT_EQ(Calculator::calculate(""), "Error: empty expression.");
    EXPECT_EQ(Calculator::calculate(" \n\t "), "Error: empty expression.");
}

TEST(CalculatorTest, ForeignCharactersOrNoDigitAreRefused)
{
    for (const char *const expression :
         {"(", "abc", "2^3", "1e5", "()", "+-*/.", "2 % 3", "0x10", "2,5", "1;2"})
        EXPECT_EQ(Calculator::calculate(expression), unsupported) << expression;
    EXPECT_EQ(Calculator::calculate(u"٣+٤"_qs), unsupported);
    EXPECT_EQ(Calculator::calculate(QString("1") + QChar(0) + "2"), unsupported);
}

TEST(CalculatorTest, MalformedExpressionsSaySo)
{
    for (const char *const expression : {"2(3)", "(1+2", "1+2)", "*2", "2*", "1 2"})
        EXPECT_EQ(Calculator::calculate(expression), notParsed) << expression;
}

TEST(CalculatorTest, ParenthesesWithoutADigitAreRefusedBeforeTheyAreParsed)
{
    EXPECT_EQ(Calculator::calculate("()"), unsupported);
}

TEST(CalculatorTest, PowersAndIntegerDivisionAreRefusedByName)
{
    EXPECT_EQ(Calculator::calculate("2**3"), "Error: unexpected character \"**\"");
    EXPECT_EQ(Calculator::calculate("2++3"), "Error: unexpected character \"++\"");
    EXPECT_EQ(Calculator::calculate("2//3"), "Error: unexpected character \"//\"");
}

TEST(CalculatorTest, DivisionByZeroIsTold)
{
    EXPECT_EQ(Calculator::calculate("1/0"), "Error: division by zero");
    EXPECT_EQ(Calculator::calculate("1/(2-2)"), "Error: division by zero");
}

TEST(CalculatorTest, TooLargeNumbersAreTold)
{
    const QString run(400, u'9');
    EXPECT_EQ(Calculator::calculate(run), "Error: unexpected character \"" + run + "\"");
    const QString large(300, u'9');
    EXPECT_EQ(Calculator::calculate(large + " * " + large), "Error: the result is too large or not a number");
}

TEST(CalculatorTest, ALineEndInsidePassesTheCharacterCheckAndFailsAsAToken)
{
    EXPECT_EQ(Calculator::calculate("1\n+2"), "Error: unexpected character \"\n\"");
    EXPECT_EQ(Calculator::calculate("1\r\n+2"), "Error: unexpected character \"\r\n\"");
}

TEST(CalculatorTest, WholeNumbersHaveNoPointUpToTheirBound)
{
    EXPECT_EQ(Calculator::formatNumber(8), "8");
    EXPECT_EQ(Calculator::formatNumber(-3), "-3");
    EXPECT_EQ(Calculator::formatNumber(-0.0), "0");
    EXPECT_EQ(Calculator::formatNumber(999999999999999), "999999999999999");
    EXPECT_EQ(Calculator::formatNumber(-999999999999999), "-999999999999999");
    EXPECT_EQ(Calculator::calculate("999999999999999"), "The result is 999999999999999.");
    EXPECT_EQ(Calculator::calculate("0/-5"), "The result is 0.");
}

TEST(CalculatorTest, OtherNumbersAreTheShortestTextThatReadsBack)
{
    EXPECT_EQ(Calculator::formatNumber(0.5), "0.5");
    EXPECT_EQ(Calculator::formatNumber(7.0 / 3.0), "2.3333333333333335");
    EXPECT_EQ(Calculator::formatNumber(1e16), "1e+16");
    EXPECT_EQ(Calculator::calculate("1" + QString(15, u'0')), "The result is 1e+15.");
    EXPECT_EQ(Calculator::formatNumber(-1.7976931348623157e308), "-1.7976931348623157e+308");
    for (const double value : {0.1, 1e-7, 123456.789, 1e15 + 2, 4.9e-324, 1.0 / 3.0})
        EXPECT_EQ(Calculator::formatNumber(value).toDouble(), value);
}

TEST(CalculatorTest, SmallNumbersAreWrittenAsAPersonWritesThemDownToAMillionth)
{
    EXPECT_EQ(Calculator::calculate("1/10000"), "The result is 0.0001.");
    EXPECT_EQ(Calculator::calculate("-1/1000000"), "The result is -0.000001.");
    EXPECT_EQ(Calculator::formatNumber(0.000012), "0.000012");
    EXPECT_EQ(Calculator::formatNumber(-1.2345678901234567e-6), "-0.0000012345678901234567");
    EXPECT_EQ(Calculator::formatNumber(9.99e-7), "9.99e-07");
    EXPECT_EQ(Calculator::formatNumber(1e-7), "1e-07");
}

} // namespace
} // namespace morvane
