#include "platform/foundation/XmlDocument.h"

#include <gtest/gtest.h>

namespace cantorel::foundation {
namespace {

QString textAt(const QByteArray &xml, const char *path, const char *attribute = nullptr) {
    const auto document = XmlDocument::parse(xml);
    const auto element = document ? document.value().first(path) : std::nullopt;
    if (!element)
        return "-";
    return attribute ? element->attribute(attribute) : element->text();
}

TEST(XmlDocument, TheFirstOfWhatAPathFinds) {
    const QByteArray xml = "<a><b x='1' y=''>eins</b><c><b x='2'>zwei</b></c></a>";
    EXPECT_EQ(textAt(xml, "//b"), "eins");
    EXPECT_EQ(textAt(xml, "//c//b", "x"), "2");
    EXPECT_EQ(textAt(xml, "//a"), "einszwei");
    EXPECT_TRUE(textAt(xml, "//b", "z").isNull());
    EXPECT_FALSE(textAt(xml, "//b", "y").isNull());
    for (const char *none : {"//d", "//", "count(//b)", "//b/@x", "", "//b["})
        EXPECT_EQ(textAt(xml, none), "-") << none;
}

TEST(XmlDocument, WhatIsBrokenIsPassedOver) {
    EXPECT_EQ(textAt("<a><b x='1'>eins</a>", "//b", "x"), "1");
    EXPECT_EQ(textAt("<a><b x='&nope; 1' x='2'/>", "//b", "x"), " 1");
    EXPECT_EQ(textAt("<a><b>eins", "//b"), "eins");
    for (const char *nothing : {"", "   ", "plain", "<?xml version='1.0'?>"}) {
        const auto document = XmlDocument::parse(nothing);
        ASSERT_FALSE(document) << nothing;
        EXPECT_FALSE(document.failure().detail.isEmpty());
    }
}

TEST(XmlDocument, OneThatDeclaresEntitiesOrIsEnormousIsNotRead) {
    EXPECT_EQ(textAt("<!DOCTYPE a><a><b>x</b></a>", "//b"), "x");
    for (const char *declared : {"e 'ha'", "% e 'ha'", "e SYSTEM 'file:///etc/hostname'", "e SYSTEM 'u' NDATA n"})
        EXPECT_FALSE(XmlDocument::parse(QByteArray("<!DOCTYPE a [<!ENTITY ") + declared + ">]><a><b>x</b></a>"))
            << declared;
    EXPECT_FALSE(XmlDocument::parse("<a>" + QByteArray(9 << 20, 'x') + "</a>"));
}

} // namespace
} // namespace cantorel::foundation
