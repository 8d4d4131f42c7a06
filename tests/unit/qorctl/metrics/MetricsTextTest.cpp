#include <gtest/gtest.h>

#include "MetricsReading.h"
#include "metrics/MetricsText.h"

namespace {

using qorctl::CLabels;
using qorctl::CMetricsText;
using qorctl::EMetric;

std::string Labelled(const std::string& value) {
    CMetricsText text;
    text.Begin({"a", EMetric::GAUGE, "h"});
    text.Add({"l", value}, 1);
    EXPECT_EQ(qortest::ReadMetrics(text.Text()).problem, "") << text.Text();
    const std::string head = "# HELP a h\n# TYPE a gauge\na{l=\"";
    return text.Text().substr(head.size(), text.Text().size() - head.size() - 5);
}

TEST(MetricsTextTest, FamilyHasItsHelpItsTypeAndItsSeries) {
    CMetricsText text;
    text.Begin({"a_total", EMetric::COUNTER, "Some help."});
    text.Add({}, 3);
    text.Add(CLabels("b", "1").With("c", "x y"), 4);
    text.Begin({"d", EMetric::GAUGE, "More."});
    text.AddReal({}, 0.5);
    EXPECT_EQ(text.Text(),
              "# HELP a_total Some help.\n# TYPE a_total counter\na_total 3\n"
              "a_total{b=\"1\",c=\"x y\"} 4\n# HELP d More.\n# TYPE d gauge\nd 0.5\n");
}

TEST(MetricsTextTest, FamilyWithoutSeriesIsLeftOut) {
    CMetricsText text;
    text.Begin({"a", EMetric::GAUGE, "h"});
    text.Begin({"b", EMetric::GAUGE, "h"});
    EXPECT_EQ(text.Text(), "");
}

TEST(MetricsTextTest, OfEqualSeriesTheFirstCounts) {
    CMetricsText text;
    text.Begin({"a", EMetric::GAUGE, "h"});
    text.Add({"b", "1"}, 1);
    text.Add({"b", "1"}, 2);
    EXPECT_EQ(text.Text(), "# HELP a h\n# TYPE a gauge\na{b=\"1\"} 1\n");
}

TEST(MetricsTextTest, QuotesBackslashesAndWhatIsNotPrintableAreEscaped) {
    EXPECT_EQ(Labelled("a\"b\\c"), R"(a\"b\\c)");
    EXPECT_EQ(Labelled("a\nb\r\t"), R"(a\\nb\\r\\t)");
    EXPECT_EQ(Labelled("\xff\x1b"), R"(\\xff\\x1b)");
    EXPECT_EQ(Labelled(std::string("a\0b", 3)), R"(a\\x00b)");
    EXPECT_EQ(Labelled("\u202E\u00B0"), "\\\\xe2\\\\x80\\\\xae\u00B0");
    EXPECT_EQ(Labelled("{},= #"), "{},= #");
}

TEST(MetricsTextTest, NumbersAreWholeWhateverTheirSize) {
    CMetricsText text;
    text.Begin({"a", EMetric::GAUGE, "h"});
    text.Add({"n", "1"}, 9223372036854775807LL);
    text.Add({"n", "2"}, -5);
    text.AddReal({"n", "3"}, 1795381525.25);
    text.AddReal({"n", "4"}, 33204139332677180000000.0);
    EXPECT_EQ(text.Text(),
              "# HELP a h\n# TYPE a gauge\na{n=\"1\"} 9223372036854775807\na{n=\"2\"} -5\n"
              "a{n=\"3\"} 1795381525.25\na{n=\"4\"} 3.320413933267718e+22\n");
}

TEST(MetricsTextTest, LabelThatIsNotThereOrThereAlreadyIsNotAdded) {
    const CLabels labels = CLabels().With("a", "1");
    EXPECT_EQ(labels.With("b", std::nullopt).With("c", "").With("a", "2").Text(), "a=\"1\"");
}

TEST(MetricsTextTest, NameInAValueOrInAnotherNameIsNotThatLabel) {
    const CLabels labels = CLabels().With("xa", "a=\"2\",a=\"").With("ab", ",a=");
    EXPECT_EQ(labels.With("a", "1").Text(), labels.Text() + ",a=\"1\"");
    EXPECT_EQ(labels.With("ab", "1").Text(), labels.Text());
    EXPECT_EQ(labels.With("xa", "1").Text(), labels.Text());
}

TEST(MetricsTextTest, LabelsOfTwoStandOneBehindTheOther) {
    const CLabels labels("a", "1");
    EXPECT_EQ(labels.And({"b", "2"}).Text(), "a=\"1\",b=\"2\"");
    EXPECT_EQ(labels.And({}).Text(), labels.Text());
    EXPECT_EQ(CLabels().And(labels).Text(), labels.Text());
}

}  // namespace
