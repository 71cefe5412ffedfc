#include "tools/SafeMath.h"

#include <QString>
#include <gtest/gtest.h>

namespace morvane {
namespace {

using Number = MathToken::Number;
using Op = MathToken::Op;
using LParen = MathToken::LParen;
using RParen = MathToken::RParen;
using Kind = SafeMathError::Kind;

double value(const QString &expression)
{
    const auto result = SafeMath::evaluate(expression);
    EXPECT_TRUE(result.has_value()) << expression.toStdString();
    return result.value_or(-1e9);
}

SafeMathError error(const QString &expression)
{
    const auto result = SafeMath::evaluate(expression);
    EXPECT_FALSE(result.has_value()) << expression.toStdString();
    return result ? SafeMathError{} : result.error();
}

SafeMathError invalid(const QString &token)
{
    return {Kind::invalidToken, token};
}

TEST(SafeMathTest, TokenizesNumbersOperatorsAndParentheses)
{
    const std::vector<MathToken> expected{{LParen{}}, {Number{1.5}}, {Op{"+"}},  {Number{0.5}},
                                          {RParen{}}, {Op{"*"}},     {Op{"u-"}}, {Number{2}}};
    EXPECT_EQ(SafeMath::tokenize(u"(1.5+.5) * -2."), expected);
}

TEST(SafeMathTest, TokenizesNothingAsNothing)
{
    EXPECT_EQ(SafeMath::tokenize(u"").value().size(), 0u);
    EXPECT_EQ(SafeMath::tokenize(u" \t ").value().size(), 0u);
}

TEST(SafeMathTest, UnaryPlusIsDropped)
{
    const std::vector<MathToken> expected{{Number{2}}, {Op{"-"}}, {Number{3}}};
    EXPECT_EQ(SafeMath::tokenize(u"+2-+3"), expected);
}

TEST(SafeMathTest, ADoubledMinusIsABinaryAndAUnaryOne)
{
    const std::vector<MathToken> expected{{Number{2}}, {Op{"-"}}, {Op{"u-"}}, {Number{3}}};
    EXPECT_EQ(SafeMath::tokenize(u"2--3"), expected);
}

TEST(SafeMathTest, OnlyBlanksAndTabsPartTokens)
{
    EXPECT_EQ(SafeMath::tokenize(u"1\n+2").error(), invalid("\n"));
    EXPECT_EQ(SafeMath::tokenize(u"1\r\n+2").error(), invalid("\r\n"));
    EXPECT_EQ(SafeMath::tokenize(u"1\u00a0+2").error(), invalid(QString(QChar(0xa0))));
}

TEST(SafeMathTest, AnUnknownCharacterIsNamedAsTheUserSeesIt)
{
    EXPECT_EQ(SafeMath::tokenize(u"1+👩‍👩‍👧x").error(), invalid(u"👩‍👩‍👧"_qs));
    EXPECT_EQ(SafeMath::tokenize(u"2^3").error(), invalid("^"));
    EXPECT_EQ(SafeMath::tokenize(u"٣").error(), invalid(u"٣"_qs));
}

TEST(SafeMathTest, ANumberThatDoesNotParseIsNamedAsAWhole)
{
    EXPECT_EQ(SafeMath::tokenize(u"1.2.3").error(), invalid("1.2.3"));
    EXPECT_EQ(SafeMath::tokenize(u"1+.").error(), invalid("."));
    EXPECT_EQ(SafeMath::tokenize(u"..5").error(), invalid("..5"));
    const QString run(400, u'9');
    EXPECT_EQ(SafeMath::tokenize(run).error(), invalid(run));
}

TEST(SafeMathTest, ANumberTooNearToZeroIsZero)
{
    EXPECT_EQ(value("0." + QString(400, u'0') + "1"), 0.0);
    EXPECT_EQ(value("." + QString(400, u'0') + "1"), 0.0);
}

TEST(SafeMathTest, DoubledOperatorsOfOtherLanguagesAreRefusedByName)
{
    EXPECT_EQ(error("2**3"), invalid("**"));
    EXPECT_EQ(error("2++3"), invalid("++"));
    EXPECT_EQ(error("2//3"), invalid("//"));
    EXPECT_EQ(value("2+ +3"), 5);
    EXPECT_EQ(error("2* *3").kind, Kind::malformed);
}

TEST(SafeMathTest, PrecedenceRanksTheOperators)
{
    EXPECT_EQ(SafeMath::precedence("+"), 1);
    EXPECT_EQ(SafeMath::precedence("-"), 1);
    EXPECT_EQ(SafeMath::precedence("*"), 2);
    EXPECT_EQ(SafeMath::precedence("/"), 2);
    EXPECT_EQ(SafeMath::precedence("u-"), 3);
    EXPECT_EQ(SafeMath::precedence("^"), 0);
    EXPECT_EQ(SafeMath::precedence(""), 0);
}

TEST(SafeMathTest, EvaluatesSigns)
{
    EXPECT_EQ(value("2--3"), 5);
    EXPECT_EQ(value("2-+3"), -1);
    EXPECT_EQ(value("--2"), 2);
    EXPECT_EQ(value("+2"), 2);
    EXPECT_EQ(value("2+-3"), -1);
    EXPECT_EQ(value("-2*3"), -6);
    EXPECT_EQ(value("2*-3"), -6);
    EXPECT_EQ(value("-(2+3)"), -5);
    EXPECT_EQ(value("2---3"), -1);
}

TEST(SafeMathTest, EvaluatesFromLeftToRightByPrecedence)
{
    EXPECT_EQ(value("3 * (12 - 4)"), 24);
    EXPECT_EQ(value("10-4-3"), 3);
    EXPECT_EQ(value("100/10/5"), 2);
    EXPECT_EQ(value("2+3*4-6/3"), 12);
    EXPECT_EQ(value("((7))"), 7);
}

TEST(SafeMathTest, MalformedExpressionsSaySo)
{
    for (const char *const expression :
         {"2(3)", "(1+2", "1+2)", "()", "*2", "2*", "1 2", "", "(", ")", "-", "1+"})
        EXPECT_EQ(error(expression), (SafeMathError{Kind::malformed, {}})) << expression;
}

TEST(SafeMathTest, DivisionByZeroIsFoundBeforeDividing)
{
    EXPECT_EQ(error("1/0").kind, Kind::divisionByZero);
    EXPECT_EQ(error("1/(2-2)").kind, Kind::divisionByZero);
    EXPECT_EQ(error("1/-0").kind, Kind::divisionByZero);
    EXPECT_EQ(error("0/0").kind, Kind::divisionByZero);
}

TEST(SafeMathTest, AResultBeyondDoublesIsAnOverflow)
{
    const QString large(300, u'9');
    EXPECT_EQ(error(large + "*" + large).kind, Kind::overflow);
    EXPECT_EQ(error(large + "/0." + QString(200, u'0') + "1").kind, Kind::overflow);
}

TEST(SafeMathTest, VeryLongExpressionsAreEvaluatedWithoutRecursion)
{
    constexpr qsizetype depth = 200'000;
    EXPECT_EQ(value(QString(depth, u'(') + "1" + QString(depth, u')')), 1);
    EXPECT_EQ(value(QString(depth, u'-') + "1"), 1);
    EXPECT_EQ(value("1" + QString("+1").repeated(depth)), depth + 1);
    EXPECT_EQ(error(QString(depth, u'(')).kind, Kind::malformed);
}

TEST(SafeMathTest, ErrorsAreWordedForTheModel)
{
    EXPECT_EQ(invalid("**").errorDescription(), "unexpected character \"**\"");
    EXPECT_EQ((SafeMathError{Kind::malformed, {}}.errorDescription()), "the expression could not be parsed");
    EXPECT_EQ((SafeMathError{Kind::divisionByZero, {}}.errorDescription()), "division by zero");
    EXPECT_EQ((SafeMathError{Kind::overflow, {}}.errorDescription()),
              "the result is too large or not a number");
}

} // namespace
} // namespace morvane
