// The timeline picture: well-formed SVG, one row per cycle, outside text escaped, and the
// seconds that matter marked.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "report/replay_report.h"
#include "report_xml.h"

namespace replay {
namespace {

using xmltest::Element;

bool wellFormed(const std::string& xml) {
    Element root;
    std::string error;
    return xmltest::parseDocument(xml, &root, &error);
}

TEST(ReportXmlReaderTest, TellsWellFormedFromBroken) {
    EXPECT_TRUE(
        wellFormed("<?xml version=\"1.0\"?>\n<a x='1' y=\"&lt;&#38;&#x3C;\"><!-- c -->"
                   "<b/>t &amp; u<![CDATA[<&]]></a>\n"));
    for (const char* broken :
         {"<a><b></a></b>", "<a>x & y</a>", "<a x=\"<\"/>", "<a x=1/>", "<a x=\"1\" x=\"2\"/>",
          "<a>&nbsp;</a>", "<a/><b/>", "<a>\xff</a>", "<a>\x01</a>", "<a>]]></a>", "<a>",
          "<a x=\"1\"y=\"2\"/>", "<a><!-- -- --></a>"}) {
        EXPECT_FALSE(wellFormed(broken)) << broken;
    }
}

CycleRecord quietSecond(int index) {
    CycleRecord cycle;
    cycle.index = index;
    cycle.utcLabel =
        "12:00:" + std::string(index % 60 < 10 ? "0" : "") + std::to_string(index % 60);
    cycle.hasFix = true;
    cycle.providerReported = true;
    cycle.nmeaChunks = 1;
    cycle.rmcValidTrue = 1;
    cycle.satelliteReport = true;
    cycle.usedBefore = cycle.usedAfter = 8;
    cycle.daemonUp = true;
    return cycle;
}

ReplayReport runOf(int seconds) {
    ReplayReport report;
    report.capture = "gpsd-quectel.log";
    for (int i = 0; i < seconds; ++i) report.cycles.push_back(quietSecond(i));
    return report;
}

Element parsedSvg(const ReplayReport& report) {
    std::ostringstream out;
    writeTimelineSvg(report, out);
    Element root;
    std::string error;
    EXPECT_TRUE(xmltest::parseDocument(out.str(), &root, &error)) << error;
    return root;
}

std::vector<const Element*> rows(const Element& root) {
    return xmltest::withClass(root, "cycle");
}

std::set<std::string> classesIn(const Element& element) {
    std::vector<const Element*> all;
    xmltest::collect(
        element, [](const Element&) { return true; }, &all);
    std::set<std::string> classes;
    for (const Element* e : all) classes.insert(e->attribute("class"));
    return classes;
}

// data-index of the rows that hold an element of this class.
std::vector<int> rowsMarked(const Element& root, const std::string& cssClass) {
    std::vector<int> marked;
    for (const Element* row : rows(root)) {
        if (classesIn(*row).count(cssClass))
            marked.push_back(std::stoi(row->attribute("data-index")));
    }
    return marked;
}

int rowTop(const Element& row) {
    std::smatch m;
    const std::string transform = row.attribute("transform");
    EXPECT_TRUE(std::regex_match(transform, m, std::regex(R"(translate\(0,(\d+)\))"))) << transform;
    return m.empty() ? -1 : std::stoi(m[1]);
}

TEST(ReportTimelineTest, OneRowPerCycleTopToBottomInsideThePicture) {
    const Element root = parsedSvg(runOf(130));  // more than two one-minute blocks
    EXPECT_EQ(root.name, "svg");
    EXPECT_EQ(root.attribute("xmlns"), "http://www.w3.org/2000/svg");
    EXPECT_EQ(root.attribute("version"), "1.1");
    const auto cycleRows = rows(root);
    ASSERT_EQ(cycleRows.size(), 130u);
    int previousTop = -1;
    for (size_t i = 0; i < cycleRows.size(); ++i) {
        EXPECT_EQ(cycleRows[i]->name, "g");
        EXPECT_EQ(cycleRows[i]->attribute("data-index"), std::to_string(i));
        const int top = rowTop(*cycleRows[i]);
        EXPECT_GE(top, previousTop + 14) << "row " << i << " overlaps the one above";
        previousTop = top;
    }
    EXPECT_LE(previousTop + 14, std::stoi(root.attribute("height")));
    EXPECT_EQ(rows(parsedSvg(runOf(0))).size(), 0u);
}

TEST(ReportTimelineTest, TitleNamesCaptureAndOptions) {
    ReplayReport report = runOf(3);
    report.hal = "1.0";
    report.burst = true;
    report.jitterMs = 40;
    const Element root = parsedSvg(report);
    const auto heading = xmltest::withClass(root, "heading");
    ASSERT_EQ(heading.size(), 1u);
    for (const char* part : {"gpsd-quectel.log", "HAL 1.0", "burst", "jitter 40 ms", "3 cycles"}) {
        EXPECT_NE(heading[0]->text.find(part), std::string::npos) << part;
    }
    EXPECT_FALSE(xmltest::withClass(root, "legend").empty());
}

TEST(ReportTimelineTest, HostileTextStaysText) {
    ReplayReport report = runOf(2);
    report.capture = "<svg onload=\"x\">&amp;'\x01\xff.log";
    report.cycles[1].chunksRejected = {{"</text><script>&", 2}};
    std::string longReason;
    for (int i = 0; i < 60; ++i) longReason += "\u00e9";  // two bytes each
    report.cycles[0].chunksRejected = {{longReason, 1}};
    const Element root = parsedSvg(report);  // a reason cut mid-character would not parse
    const auto heading = xmltest::withClass(root, "heading");
    ASSERT_EQ(heading.size(), 1u);
    EXPECT_NE(heading[0]->text.find("<svg onload=\"x\">&amp;'??.log"), std::string::npos)
        << heading[0]->text;
    EXPECT_NE(rows(root)[1]->text.find("</text><script>& \u00d72"), std::string::npos);
    EXPECT_EQ(rows(root).size(), 2u);
    const auto cut = xmltest::withClass(*rows(root)[0], "rej");
    ASSERT_EQ(cut.size(), 1u);
    EXPECT_EQ(cut[0]->text, longReason.substr(0, 41 * 2) + "\u2026");
}

TEST(ReportTimelineTest, MarksPaddedAndDaemonDownSeconds) {
    ReplayReport report = runOf(5);
    report.cycles[1].usedBefore = 2;
    report.cycles[1].usedAfter = 7;
    report.cycles[1].padded = true;
    report.cycles[2].daemonDied = true;
    report.cycles[2].daemonUp = false;
    report.cycles[3].daemonUp = false;
    report.cycles[4].reconnected = report.cycles[4].batchingReplayed = true;
    const Element root = parsedSvg(report);

    EXPECT_EQ(rowsMarked(root, "pad"), std::vector<int>({1}));
    EXPECT_EQ(rowsMarked(root, "down"), std::vector<int>({2, 3}));
    EXPECT_EQ(rowsMarked(root, "up"), std::vector<int>({0, 1, 4}));
    EXPECT_EQ(rowsMarked(root, "died"), std::vector<int>({2}));
    EXPECT_EQ(rowsMarked(root, "back"), std::vector<int>({4}));
    EXPECT_EQ(rowsMarked(root, "batch"), std::vector<int>({4}));

    // The bars show 2 own satellites and 5 added ones, the added part after the own part.
    const Element& padded = *rows(root)[1];
    const auto own = xmltest::withClass(padded, "used");
    const auto added = xmltest::withClass(padded, "pad");
    ASSERT_EQ(own.size(), 1u);
    ASSERT_EQ(added.size(), 1u);
    const int ownWidth = std::stoi(own[0]->attribute("width"));
    EXPECT_EQ(std::stoi(added[0]->attribute("width")) * 2, ownWidth * 5);
    EXPECT_EQ(std::stoi(added[0]->attribute("x")), std::stoi(own[0]->attribute("x")) + ownWidth);
    EXPECT_NE(padded.text.find("2 \u2192 7"), std::string::npos) << padded.text;
}

TEST(ReportTimelineTest, SourceFusedAndRmcCellsFollowTheRecord) {
    ReplayReport report = runOf(4);
    report.cycles[1].providerReported = false;
    report.cycles[1].fusedForwarded = 2;
    report.cycles[1].fusedDropped = 1;
    report.cycles[1].rmcValidTrue = 0;
    report.cycles[1].rmcValidFalse = 1;
    report.cycles[2].fusedForwarded = 1;
    report.cycles[3].providerReported = false;
    report.cycles[3].rmcValidTrue = 0;
    const Element root = parsedSvg(report);

    EXPECT_EQ(rowsMarked(root, "src-receiver"), std::vector<int>({0}));
    EXPECT_EQ(rowsMarked(root, "src-fused"), std::vector<int>({1}));
    EXPECT_EQ(rowsMarked(root, "src-both"), std::vector<int>({2}));
    EXPECT_EQ(rowsMarked(root, "src-none"), std::vector<int>({3}));
    EXPECT_EQ(rowsMarked(root, "rmc-true"), std::vector<int>({0, 2}));
    EXPECT_EQ(rowsMarked(root, "rmc-false"), std::vector<int>({1}));
    EXPECT_EQ(rowsMarked(root, "drop"), std::vector<int>({1}));
    const std::string& fused = rows(root)[1]->text;
    EXPECT_NE(fused.find("fwd 2"), std::string::npos) << fused;
    EXPECT_NE(fused.find("drop 1"), std::string::npos) << fused;
}

}  // namespace
}  // namespace replay
