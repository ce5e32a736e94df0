// The framework's exceptions: what each is and the text it carries.
#include <Fen/Exception.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>

#include <gtest/gtest.h>

namespace {

template <class Thrown>
class ExceptionTest : public testing::Test {};

using AllExceptions = testing::Types<Fen::Exception, Fen::AgentException,
                                     Fen::NoImplementationException, Fen::NullArgumentException,
                                     Fen::BadOptionalAccess, Fen::AttributeFormatException>;
TYPED_TEST_SUITE(ExceptionTest, AllExceptions, );

// The text of what is caught as `Caught` when a `Thrown` is thrown.
template <class Caught, class Thrown>
std::string textCaught(Thrown const& exception) {
    try {
        throw exception;
    } catch (Caught const& caught) {
        return caught.what();
    } catch (...) {
        return "(not caught)";
    }
}

TYPED_TEST(ExceptionTest, CarriesItsWholeText) {
    EXPECT_STREQ(TypeParam("no such path: 'a/b', line 7").what(), "no such path: 'a/b', line 7");
    EXPECT_STREQ(TypeParam("").what(), "");
    std::string const longText(5000, 'x');
    EXPECT_EQ(TypeParam(longText).what(), longText);
}

TYPED_TEST(ExceptionTest, OwnsItsText) {
    std::string source = "original";
    TypeParam const exception(source);
    source = "changed!";
    EXPECT_STREQ(exception.what(), "original");
}

TYPED_TEST(ExceptionTest, IsCaughtAsItself) {
    EXPECT_EQ(textCaught<TypeParam>(TypeParam("as itself")), "as itself");
}

TYPED_TEST(ExceptionTest, IsCaughtAsAnExceptionOfTheFramework) {
    EXPECT_EQ(textCaught<Fen::Exception>(TypeParam("as Fen::Exception")), "as Fen::Exception");
}

TYPED_TEST(ExceptionTest, IsCaughtAsAStandardException) {
    EXPECT_EQ(textCaught<std::exception>(TypeParam("as std::exception")), "as std::exception");
}

TYPED_TEST(ExceptionTest, KeepsItsTextWhenCopiedAndAssigned) {
    TypeParam const original("copied");
    TypeParam const copy = original;
    TypeParam assigned("former");
    assigned = copy;
    EXPECT_STREQ(copy.what(), "copied");
    EXPECT_STREQ(assigned.what(), "copied");
}

TYPED_TEST(ExceptionTest, KeepsTypeAndTextOnItsWayThroughAnExceptionPointer) {
    auto const pointer = std::make_exception_ptr(TypeParam("passed on"));
    try {
        std::rethrow_exception(pointer);
    } catch (TypeParam const& caught) {
        EXPECT_EQ(typeid(caught), typeid(TypeParam));
        EXPECT_STREQ(caught.what(), "passed on");
    }
}

template <class A, class B>
constexpr bool unrelated = !std::is_base_of_v<A, B> && !std::is_base_of_v<B, A>;

TEST(ExceptionKindsTest, NoKindIsCaughtAsAnother) {
    EXPECT_EQ(textCaught<Fen::AgentException>(Fen::NullArgumentException("null")), "(not caught)");
    EXPECT_EQ(textCaught<Fen::NoImplementationException>(Fen::AgentException("agent")),
              "(not caught)");
    EXPECT_EQ(textCaught<Fen::AttributeFormatException>(Fen::BadOptionalAccess("empty")),
              "(not caught)");
    EXPECT_EQ(textCaught<Fen::BadOptionalAccess>(Fen::Exception("base")), "(not caught)");
    EXPECT_TRUE((unrelated<Fen::AgentException, Fen::NoImplementationException>));
    EXPECT_TRUE((unrelated<Fen::AgentException, Fen::AttributeFormatException>));
    EXPECT_TRUE((unrelated<Fen::NullArgumentException, Fen::BadOptionalAccess>));
    EXPECT_TRUE((unrelated<Fen::NullArgumentException, Fen::NoImplementationException>));
}

} // namespace
