#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/zml_element.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace halvern {
namespace {

using test::messageOf;

void expectSortedAndMatching(const ZMLElement& element, const std::map<std::string, std::string>& expected)
{
    const auto& attributes = element.attributes();
    ASSERT_EQ(attributes.size(), expected.size());
    auto want = expected.begin();
    for (const ZAttribute& attribute : attributes) {
        EXPECT_EQ(attribute.name, want->first);
        EXPECT_EQ(attribute.value, want->second);
        ++want;
    }
    for (const auto& [name, value] : expected)
        EXPECT_EQ(element.getAttribute(name, "missing"), value);
}

} // namespace

TEST(ZMLElementTest, AttributesStaySortedIntegersFallBackOnBadTextAndRequiredItemsThrow)
{
    std::vector<std::string> names;
    for (int i = 0; i < 300; ++i)
        names.push_back(ZFormat("A{0}").arg(i * 7919 % 1000).text()); // "A10" sorts before "A9"
    std::mt19937 random(12345);
    std::shuffle(names.begin(), names.end(), random);

    ZMLElement sorted("settings");
    std::map<std::string, std::string> expected;
    const auto set = [&](const std::string& name, const std::string& value) {
        sorted.setAttribute(name, value);
        expected[name] = value;
    };
    for (size_t i = 0; i < names.size(); ++i)
        set(names[i], std::to_string(i));
    for (size_t i = 0; i < names.size(); i += 3)
        set(names[i], "new"); // replacing keeps one entry per name
    expectSortedAndMatching(sorted, expected);

    std::shuffle(names.begin(), names.end(), random);
    for (size_t i = 0; i < names.size() / 2; ++i) {
        sorted.removeAttribute(names[i]);
        expected.erase(names[i]);
    }
    sorted.removeAttribute("absent");
    expectSortedAndMatching(sorted, expected);
    EXPECT_EQ(sorted.getAttribute(names[0], "fallback"), "fallback");
    EXPECT_FALSE(sorted.hasAttribute("A"));
    EXPECT_FALSE(sorted.hasAttribute("0"));
    EXPECT_FALSE(sorted.hasAttribute("B"));

    ZList<ZAttribute> replacement{{"b", "1"}, {"a", "2"}, {"b", "3"}, {"c", "4"}, {"a", "5"}};
    sorted.setAttributes(replacement);
    expectSortedAndMatching(sorted, {{"a", "5"}, {"b", "3"}, {"c", "4"}});

    ZMLElement element("value");
    element.setAttributeInt("Version", 0x050300);
    element.setAttributeInt("Low", LLONG_MIN);
    element.setAttributeInt("High", LLONG_MAX);
    EXPECT_EQ(element.getAttribute("Version"), "328448");
    EXPECT_EQ(element.getAttributeInt("Version"), 328448);
    EXPECT_EQ(element.getAttributeInt("Low"), LLONG_MIN);
    EXPECT_EQ(element.getAttributeInt("High"), LLONG_MAX);
    EXPECT_EQ(element.getAttributeInt("Missing", 256), 256);

    const std::pair<const char*, long long> texts[] = {
        {" +7 ", 7}, {"-12", -12}, {"", -1}, {"+-3", -1}, {"12abc", -1}, {"0x10", -1}, {"99999999999999999999", -1}};
    for (const auto& [text, number] : texts) {
        element.setAttribute("Item", text);
        EXPECT_EQ(element.getAttributeInt("Item", -1), number) << '"' << text << '"';
    }

    ZMLElement root("settings");
    root.setAttribute("Version", "1");
    ZMLElement& lfos = root.addChild("LFOs");
    EXPECT_EQ(root.requireAttribute("Version"), "1");
    EXPECT_EQ(&root.requireChild("LFOs"), &lfos);
    const ZMLElement& constant = root;

    EXPECT_EQ(messageOf([&] { root.requireAttribute("ChannelMode"); }),
              "Could not find required attribute (ChannelMode).");
    EXPECT_EQ(messageOf([&] { constant.requireChild("lfos"); }), "Could not find required subitem (lfos).");
}

TEST(ZMLElementTest, ChildrenAreFoundRemovedClearedAndCopiedDeeply)
{
    ZMLElement root("settings");
    ZMLElement& first = root.addChild("LFO");
    first.setAttribute("Mode", "1");
    ZMLElement& other = root.addChild("Position");
    ZMLElement& second = root.addChild("LFO");
    second.setText("second");
    second.addChild("Steps").setAttributeInt("Count", 4);

    EXPECT_EQ(root.findChild("LFO"), &first);

    auto copy = root.clone();
    EXPECT_TRUE(*copy == root);
    copy->children()[2]->children()[0]->setAttribute("Count", "5");
    EXPECT_FALSE(*copy == root);
    EXPECT_EQ(second.children()[0]->getAttribute("Count"), "4"); // the copy owns its own elements

    ZMLElement notAChild("LFO");
    EXPECT_FALSE(root.removeChild(notAChild));
    EXPECT_TRUE(root.removeChild("LFO")); // the first of that name
    ASSERT_EQ(root.children().size(), 2u);
    EXPECT_EQ(root.findChild("LFO")->text(), "second");
    EXPECT_TRUE(root.removeChild(other));
    EXPECT_FALSE(root.removeChild("Position"));

    EXPECT_TRUE(root.addCopy(*copy) == *copy);

    root.setText("text");
    root.setAttribute("AGC", "1");
    root.clear(); // keeps only the name
    EXPECT_TRUE(root == ZMLElement("settings"));
}

TEST(ZMLElementTest, EqualityComparesEveryPartInOrder)
{
    ZMLElement base("a");
    base.setAttribute("x", "1");
    base.setText("t");
    base.addChild("b");
    base.addChild("c");

    auto changed = [&](auto change) {
        auto copy = base.clone();
        change(*copy);
        return !(*copy == base) && !(base == *copy);
    };
    EXPECT_TRUE(changed([](ZMLElement& e) { e.setName("A"); }));
    EXPECT_TRUE(changed([](ZMLElement& e) { e.setAttribute("x", "2"); }));
    EXPECT_TRUE(changed([](ZMLElement& e) { e.setAttribute("y", "1"); }));
    EXPECT_TRUE(changed([](ZMLElement& e) { e.setText("t "); }));
    EXPECT_TRUE(changed([](ZMLElement& e) { e.addChild("b"); }));
    EXPECT_TRUE(changed([](ZMLElement& e) {
        e.removeChild("b");
        e.addChild("b");
    }));
    EXPECT_FALSE(changed([](ZMLElement&) {}));
}

} // namespace halvern
