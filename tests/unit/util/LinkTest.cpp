#include "util/tools/Link.h"

#include "tests/support/OrdinaryFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

struct LinkTest : testing::Test {
    bool parse(const QByteArray &content) {
        test::store(folder.filePath("Link.xml"), content);
        return Link::parseLinkWithFilePath(folder.filePath("Link.xml"));
    }
    const QTemporaryDir folder;
};

TEST_F(LinkTest, OnlyAddressesOfTheWebAreTaken) {
    EXPECT_TRUE(parse(R"x(<links><group><link name="faq" url="https://a.example/faq?x=1&amp;y=2"/></group>
        <link name="plain" url="http://a.example"/><link name="file" url="file:///etc/passwd"/>
        <link name="script" url="javascript:alert(1)"/><link name="none"/><link url="https://b.example"/>
        <link name="broken" url="https://"/></links>)x"));
    EXPECT_EQ(Link::address("faq"), QUrl("https://a.example/faq?x=1&y=2"));
    EXPECT_EQ(Link::address("plain"), QUrl("http://a.example"));
    for (const char *name : {"file", "script", "none", "broken", "unknown"})
        EXPECT_TRUE(Link::address(name).isEmpty()) << name;
}

TEST_F(LinkTest, WhatCannotBeReadLeavesTheTableAsItWas) {
    ASSERT_TRUE(parse("<links><link name='a' url='https://a.example'/></links>"));
    EXPECT_FALSE(parse(""));
    EXPECT_FALSE(parse("no markup"));
    EXPECT_FALSE(Link::parseLinkWithFilePath(folder.filePath("missing.xml")));
    EXPECT_EQ(Link::address("a"), QUrl("https://a.example"));
    EXPECT_TRUE(parse("<links><link name='b' url='https://b.example'/><link name='c' url='https"));
    EXPECT_EQ(Link::address("b"), QUrl("https://b.example")) << "what comes before the break counts";
    EXPECT_TRUE(Link::address("a").isEmpty());
}

} // namespace
} // namespace cantorel
