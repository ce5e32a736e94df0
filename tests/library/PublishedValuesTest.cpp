// The values that the published entity hands out: attributes, equality, truth, string form.
#include <array>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <KeldaBase/AgentMountFileInfoWrap.h>

namespace {

using Fen::AttributeFormatException;
using Kelda::ConfigPathInfo;
using Kelda::MountPathInfo;
using Kelda::PreinitPathInfo;
using testing::ElementsAre;

// --- what the three types have in common ---

template <class Value>
class PublishedValue : public testing::Test {
  public:
    static constexpr std::size_t count = Fen::attributeCount<Value>;
    using Texts = std::array<std::string, count>;

    static Value make(Texts const& texts) {
        return std::apply([](auto const&... text) { return Value(Rook::String(text)...); }, texts);
    }
    // A text of its own for each attribute.
    static Texts distinct() {
        Texts texts;
        for (std::size_t i = 0; i < count; ++i)
            texts[i] = "text" + std::to_string(i);
        return texts;
    }
    static Texts texts(MountPathInfo const& value) {
        return {value.path().c_str(), value.type().c_str(), value.flags().c_str()};
    }
    static Texts texts(ConfigPathInfo const& value) {
        return {value.path().c_str(), value.type().c_str()};
    }
    static Texts texts(PreinitPathInfo const& value) {
        return {value.path().c_str(), value.type().c_str(), value.attr().c_str()};
    }
};

using Types = testing::Types<MountPathInfo, ConfigPathInfo, PreinitPathInfo>;
TYPED_TEST_SUITE(PublishedValue, Types);

TYPED_TEST(PublishedValue, KeepsEachAttributeUnderItsOwnName) {
    EXPECT_EQ(this->texts(this->make(this->distinct())), this->distinct());
}

TYPED_TEST(PublishedValue, HasOnlyEmptyAttributesAtFirst) {
    EXPECT_EQ(this->texts(TypeParam()), typename TestFixture::Texts());
}

TYPED_TEST(PublishedValue, IsFalseOnlyWhileEveryAttributeIsEmpty) {
    EXPECT_FALSE(TypeParam());
    EXPECT_FALSE(this->make({}));
    EXPECT_TRUE(this->make(this->distinct()));
    for (std::size_t i = 0; i < TestFixture::count; ++i) {
        typename TestFixture::Texts texts;
        texts[i] = " ";
        EXPECT_TRUE(this->make(texts)) << "attribute " << i;
    }
}

TYPED_TEST(PublishedValue, IsNoNumber) {
    EXPECT_FALSE((std::is_convertible_v<TypeParam const&, bool>)) << "the truth test is explicit";
}

TYPED_TEST(PublishedValue, EqualsAnotherObjectWithTheSameAttributes) {
    auto const value = this->make(this->distinct());
    auto const same = this->make(this->distinct());
    EXPECT_TRUE(value.isEq(same));
    EXPECT_TRUE(value == same);
    EXPECT_FALSE(value != same);
    EXPECT_TRUE(TypeParam().isEq(this->make({})));
}

TYPED_TEST(PublishedValue, EqualsItself) {
    auto const value = this->make(this->distinct());
    EXPECT_TRUE(value.isEq(value));
    EXPECT_TRUE(TypeParam().isEq(TypeParam()));
}

TYPED_TEST(PublishedValue, DiffersInEachAttribute) {
    auto const value = this->make(this->distinct());
    for (std::size_t i = 0; i < TestFixture::count; ++i) {
        auto texts = this->distinct();
        texts[i] += "x";
        auto const other = this->make(texts);
        EXPECT_FALSE(value.isEq(other)) << "attribute " << i;
        EXPECT_FALSE(other.isEq(value)) << "attribute " << i;
        EXPECT_FALSE(value == other) << "attribute " << i;
        EXPECT_TRUE(value != other) << "attribute " << i;
    }
}

TYPED_TEST(PublishedValue, DiffersWhenTwoAttributesAreSwapped) {
    auto texts = this->distinct();
    std::swap(texts.front(), texts.back());
    EXPECT_FALSE(this->make(this->distinct()).isEq(this->make(texts)));
}

TYPED_TEST(PublishedValue, IsPrintedAsItsStringForm) {
    auto const value = this->make(this->distinct());
    std::ostringstream stream;
    stream << value;
    EXPECT_EQ(stream.str(), Fen::valueToStrep(value).c_str());
}

TYPED_TEST(PublishedValue, IsWrittenAttributeByAttribute) {
    std::string text;
    auto const texts = this->distinct();
    constexpr auto attributes = TypeParam::attributes();
    Fen::serAttrPre(text, TypeParam::typeName, "path", texts.front());
    if constexpr (TestFixture::count == 3)
        Fen::serAttrIntra(text, "type", texts[1]);
    Fen::serAttrPost(text, attributes.back().name, texts.back());
    EXPECT_EQ(Fen::valueToStrep(this->make(texts)).c_str(), text);
}

TYPED_TEST(PublishedValue, IsReadAttributeByAttribute) {
    auto const texts = this->distinct();
    auto const strep = Fen::valueToStrep(this->make(texts));
    Fen::AttributeCursor cursor{strep.view()};
    EXPECT_EQ(Fen::desAttrPre(cursor, TypeParam::typeName, "path"), texts.front().c_str());
    if constexpr (TestFixture::count == 3) {
        EXPECT_EQ(Fen::desAttrIntra(cursor, "type"), texts[1].c_str());
    }
    EXPECT_EQ(Fen::desAttrPost(cursor, TypeParam::attributes().back().name), texts.back().c_str());
    EXPECT_EQ(cursor.position, strep.size());
}

// --- the declarations ---

template <class Value>
std::vector<std::string> attributeNames() {
    std::vector<std::string> names;
    for (auto const& attribute : Value::attributes())
        names.emplace_back(attribute.name);
    return names;
}

TEST(PublishedValues, AreDeclaredWithTheirNamesInOrder) {
    EXPECT_EQ(MountPathInfo::typeName, "Kelda::MountPathInfo");
    EXPECT_EQ(ConfigPathInfo::typeName, "Kelda::ConfigPathInfo");
    EXPECT_EQ(PreinitPathInfo::typeName, "Kelda::PreinitPathInfo");
    EXPECT_THAT(attributeNames<MountPathInfo>(), ElementsAre("path", "type", "flags"));
    EXPECT_THAT(attributeNames<ConfigPathInfo>(), ElementsAre("path", "type"));
    EXPECT_THAT(attributeNames<PreinitPathInfo>(), ElementsAre("path", "type", "attr"));
}

TEST(PublishedValues, AreANodeForMountsAndPlainForTheOthers) {
    EXPECT_TRUE((std::is_base_of_v<Rook::Node, MountPathInfo>));
    EXPECT_FALSE(std::is_copy_constructible_v<MountPathInfo>);
    EXPECT_FALSE((std::is_base_of_v<Rook::Node, ConfigPathInfo>));
    EXPECT_FALSE((std::is_base_of_v<Rook::Node, PreinitPathInfo>));
}

TEST(PublishedValues, ThatArePlainAreCopiedAttributeByAttribute) {
    ConfigPathInfo const config("a", "T");
    PreinitPathInfo const preinit("b", "U", "createOnMount");
    auto const configCopy = config;
    PreinitPathInfo preinitCopy("x", "y", "z");
    preinitCopy = preinit;
    EXPECT_EQ(configCopy, config);
    EXPECT_EQ(preinitCopy, preinit);
}

TEST(PublishedValues, OfOneTextEachAreNotMadeByAccident) {
    EXPECT_FALSE((std::is_convertible_v<std::string_view, ConfigPathInfo>));
    EXPECT_FALSE((std::is_convertible_v<std::string_view, PreinitPathInfo>));
}

// --- shared mounts ---

TEST(MountPathInfoFactory, MakesANewObjectWithEveryCall) {
    auto const one = Kelda::mountPathInfoFactory("a/b", "T", "rw");
    auto const other = Kelda::mountPathInfoFactory("a/b", "T", "rw");
    EXPECT_EQ(one->path(), "a/b");
    EXPECT_EQ(one->type(), "T");
    EXPECT_EQ(one->flags(), "rw");
    EXPECT_EQ(one->references(), 1U);
    EXPECT_FALSE(one == other) << "references compare which object they hold";
    EXPECT_TRUE(*one == *other) << "objects compare their attributes";
    EXPECT_TRUE(one->isEq(*other));
}

class CountedInfo : public MountPathInfo {
  public:
    explicit CountedInfo(int& destroyed) : MountPathInfo("a", "T", "r"), destroyed_(destroyed) {}
    ~CountedInfo() override { ++destroyed_; }

  private:
    int& destroyed_;
};

TEST(PublishedMount, LivesAsLongAsItsLastReference) {
    int destroyed = 0;
    Rook::Ptr<MountPathInfo> first = new CountedInfo(destroyed);
    auto second = first;
    EXPECT_EQ(first->references(), 2U);
    first = nullptr;
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(second->references(), 1U);
    second = nullptr;
    EXPECT_EQ(destroyed, 1);
}

// --- string forms to the letter ---

TEST(PublishedStringForm, NamesTypeAndAttributes) {
    EXPECT_EQ(Fen::valueToStrep(*Kelda::mountPathInfoFactory("a/b", "T", "rw")),
              R"(Kelda::MountPathInfo(path: "a/b", type: "T", flags: "rw"))");
    EXPECT_EQ(Fen::valueToStrep(ConfigPathInfo("sys/config/banner", "Config::Banner")),
              R"(Kelda::ConfigPathInfo(path: "sys/config/banner", type: "Config::Banner"))");
    EXPECT_EQ(Fen::valueToStrep(PreinitPathInfo("a/%b", "T", "createOnMount")),
              R"(Kelda::PreinitPathInfo(path: "a/%b", type: "T", attr: "createOnMount"))");
}

TEST(PublishedStringForm, OfADefaultValueHasEmptyTexts) {
    EXPECT_EQ(Fen::valueToStrep(MountPathInfo()),
              R"(Kelda::MountPathInfo(path: "", type: "", flags: ""))");
    EXPECT_EQ(Fen::valueToStrep(ConfigPathInfo()), R"(Kelda::ConfigPathInfo(path: "", type: ""))");
    EXPECT_EQ(Fen::valueToStrep(PreinitPathInfo()),
              R"(Kelda::PreinitPathInfo(path: "", type: "", attr: ""))");
    EXPECT_FALSE(ConfigPathInfo(R"(Kelda::ConfigPathInfo(path: "", type: ""))"));
}

TEST(PublishedStringForm, MakesPlainValuesByConstruction) {
    ConfigPathInfo const config(R"(Kelda::ConfigPathInfo(path: "a", type: "T"))");
    EXPECT_EQ(config, ConfigPathInfo("a", "T"));
    PreinitPathInfo const preinit(R"(Kelda::PreinitPathInfo(path: "a", type: "T", attr: "x"))");
    EXPECT_EQ(preinit, PreinitPathInfo("a", "T", "x"));
}

TEST(PublishedStringForm, MakesANewSharedMount) {
    auto const info = Fen::strepToValue<Rook::Ptr<MountPathInfo>>(
        R"(Kelda::MountPathInfo(path: "a", type: "T", flags: "rw"))");
    EXPECT_TRUE(info->isEq(MountPathInfo("a", "T", "rw")));
    EXPECT_EQ(info->references(), 1U);
}

TEST(PublishedStringForm, TakesBlanksBetweenItsPieces) {
    EXPECT_EQ(ConfigPathInfo(" Kelda::ConfigPathInfo ( path : \"a b\" ,\ttype:\"T\" ) "),
              ConfigPathInfo("a b", "T"));
}

RC_GTEST_PROP(PublishedStringForm, BringsBackAnyTexts, ()) {
    auto const text = rc::gen::arbitrary<std::string>();
    auto const path = *text;
    auto const type = *text;
    auto const last = *text;
    ConfigPathInfo const config(path, type);
    RC_ASSERT(ConfigPathInfo(Fen::valueToStrep(config).view()) == config);
    RC_ASSERT(Fen::strepToValue<ConfigPathInfo>(Fen::valueToStrep(config)) == config);
    PreinitPathInfo const preinit(path, type, last);
    RC_ASSERT(PreinitPathInfo(Fen::valueToStrep(preinit).view()) == preinit);
    MountPathInfo const mount(path, type, last);
    RC_ASSERT(*Fen::strepToValue<Rook::Ptr<MountPathInfo>>(Fen::valueToStrep(mount)) == mount);
}

// --- texts that are no value ---

// Each of them is no ConfigPathInfo, PreinitPathInfo or MountPathInfo.
char const* const badForms[] = {
    "",
    "a",
    "\"a\"",
    "Kelda::ConfigPathInfo",
    "Kelda::PreinitPathInfo()",
    "ConfigPathInfo(path: \"a\", type: \"T\")",
    "Kelda::ConfigPathInfo(path: \"a\")",
    "Kelda::ConfigPathInfo(type: \"T\", path: \"a\")",
    "Kelda::ConfigPathInfo(path: \"a\" type: \"T\")",
    "Kelda::ConfigPathInfo(path: a, type: T)",
    "Kelda::ConfigPathInfo(path: \"a\", type: \"T\"",
    "Kelda::ConfigPathInfo(path: \"a\", type: \"T)",
    "Kelda::ConfigPathInfo(path: \"a\", type: \"T\") x",
    "Kelda::ConfigPathInfo(path: \"a\", type: \"T\", attr: \"x\")",
    "Kelda::PreinitPathInfo(path: \"a\", type: \"T\")",
    "Kelda::PreinitPathInfo(path: \"a\", attr: \"x\", type: \"T\")",
    "Kelda::PreinitPathInfo(path: \"a\", type: \"T\", flags: \"x\")",
    "Kelda::PreinitPathInfo(path: \"a\", type: \"T\", attr: \"x\", y: \"\")",
    "Kelda::MountPathInfo(path: \"a\", type: \"T\")",
    "Kelda::MountPathInfo(path: \"a\", type: \"T\", attr: \"x\")",
    "Kelda::MountPathInfo(path: \"a\", type: \"T\", flags: \"\\q\")",
};

TEST(PublishedStringForm, RefusesAnyOtherText) {
    for (char const* const text : badForms) {
        EXPECT_THROW(ConfigPathInfo{std::string_view(text)}, AttributeFormatException) << text;
        EXPECT_THROW(PreinitPathInfo{std::string_view(text)}, AttributeFormatException) << text;
        EXPECT_THROW(Fen::strepToValue<Rook::Ptr<MountPathInfo>>(text), AttributeFormatException)
            << text;
    }
}

TEST(PublishedStringForm, OfOneTypeIsNoneOfAnother) {
    EXPECT_THROW(ConfigPathInfo{Fen::valueToStrep(PreinitPathInfo()).view()},
                 AttributeFormatException);
    EXPECT_THROW(PreinitPathInfo{Fen::valueToStrep(MountPathInfo()).view()},
                 AttributeFormatException);
    EXPECT_THROW(Fen::strepToValue<Rook::Ptr<MountPathInfo>>(Fen::valueToStrep(PreinitPathInfo())),
                 AttributeFormatException);
}

TEST(PublishedStringForm, TellsWhereItStoppedReading) {
    std::string_view const text = R"(Kelda::ConfigPathInfo(path: "a", kind: "T"))";
    try {
        ConfigPathInfo const value(text);
        FAIL() << "nothing was thrown, but " << value << " made";
    } catch (AttributeFormatException const& fault) {
        EXPECT_EQ(fault.position(), text.find("kind"));
        EXPECT_THAT(fault.what(), testing::HasSubstr("type"));
    }
}

} // namespace
