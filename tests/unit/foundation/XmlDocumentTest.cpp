#include "platform/foundation/XmlDocument.h"

#include <gtest/gtest.h>

namespace cantorel::foundation {
namespace {

QString textAt(const QByteArray &xml, const char *path, const char *attribute = nullptr) {
    const auto document = XmlDocument::parse(xml);
    const auto element = document ? document.value().first(path) : std::nullopt;
    if (!element)
        return QStringLiteral("-");
    return attribute ? element->attribute(attribute) : element->text();
}

TEST(XmlDocument, TheFirstOfWhatAPathFinds) {
    const QByteArray xml = "<a><b x='1' y=''>eins</b><c><b x='2'>zwei</b></c></a>";
    EXPECT_EQ(textAt(xml, "//b"), QStringLiteral("eins"));
    EXPECT_EQ(textAt(xml, "//c//b", "x"), QStringLiteral("2"));
    EXPECT_EQ(textAt(xml, "//a"), QStringLiteral("einszwei"));
    EXPECT_TRUE(textAt(xml, "//b", "z").isNull());
    EXPECT_FALSE(textAt(xml, "//b", "y").isNull());
    for (const char *none : {"//d", "//", "count(//b)", "//b/@x", "", "//b["})
        EXPECT_EQ(textAt(xml, none), QStringLiteral("-")) << none;
}

TEST(XmlDocument, WhatIsBrokenIsPassedOver) {
    EXPECT_EQ(textAt("<a><b x='1'>eins</a>", "//b", "x"), QStringLiteral("1"));
    EXPECT_EQ(textAt("<a><b x='&nope; 1' x='2'/>", "//b", "x"), QStringLiteral(" 1"));
    EXPECT_EQ(textAt("<a><b>eins", "//b"), QStringLiteral("eins"));
    for (const char *nothing : {"", "   ", "plain", "<?xml version='1.0'?>"}) {
        const auto document = XmlDocument::parse(nothing);
        ASSERT_FALSE(document) << nothing;
        EXPECT_FALSE(document.failure().detail.isEmpty());
    }
}

TEST(XmlDocument, NothingOutsideTheTextIsReachedForAndNothingGrowsWithoutEnd) {
    EXPECT_EQ(textAt("<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><a><b>&e;</b></a>", "//b"), QString());
    QByteArray bomb = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 40; ++i)
        bomb += "<!ENTITY e" + QByteArray::number(i) + " '&e" + QByteArray::number(i - 1) + ";&e"
                + QByteArray::number(i - 1) + ";'>";
    bomb += "]><a><b x='&e39;'>&e39;</b></a>";
    EXPECT_LT(textAt(bomb, "//a", "x").size(), 1'000'000);
}

} // namespace
} // namespace cantorel::foundation
