/// Values that are made of named attributes, and values as text: "3:abc" is a string with its
/// length, "true" a bool, and "Type(path=3:a/b,type=1:T)" a value of two attributes or more.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include <Fen/Exception.h>
#include <Rook/String.h>

namespace Fen {

template <class Owner>
struct Attribute {
    std::string_view name;
    Rook::String Owner::*member;
};

/// Each reads the first attribute, a further one or the last one off the front of `text`, and
/// throws AttributeFormatException where the text is something else.
Rook::String desAttrPre(std::string_view& text, std::string_view typeName,
                        std::string_view attributeName);
Rook::String desAttrIntra(std::string_view& text, std::string_view attributeName);
Rook::String desAttrPost(std::string_view& text, std::string_view attributeName);

Rook::String valueToStrep(Rook::String const& value);
Rook::String valueToStrep(bool value);

/// T is a Rook::String, a bool, or a type that derives from AttributeValue<T> and is constructed
/// from its attributes in their order. Throws AttributeFormatException.
template <class T>
T strepToValue(std::string_view text);
template <>
Rook::String strepToValue<Rook::String>(std::string_view text);
template <>
bool strepToValue<bool>(std::string_view text);

/// The base of a type T that has a `typeName` and tells its `attributes()`.
template <class T>
class AttributeValue {
  public:
    bool isEq(T const& other) const noexcept {
        for (auto const& attribute : T::attributes())
            if (self().*attribute.member != other.*attribute.member)
                return false;
        return true;
    }
    explicit operator bool() const noexcept {
        for (auto const& attribute : T::attributes())
            if (!(self().*attribute.member).empty())
                return true;
        return false;
    }
    friend bool operator==(T const& a, T const& b) noexcept { return a.isEq(b); }
    friend std::ostream& operator<<(std::ostream& stream, T const& value) {
        return stream << valueToStrep(value);
    }

  private:
    T const& self() const noexcept { return static_cast<T const&>(*this); }
};

template <class T>
requires std::derived_from<T, AttributeValue<T>> Rook::String valueToStrep(T const& value) {
    std::string text(T::typeName);
    char before = '(';
    for (auto const& attribute : T::attributes()) {
        text.append(1, before).append(attribute.name).append("=");
        text.append(valueToStrep(value.*attribute.member).view());
        before = ',';
    }
    return text + ")";
}

template <class T>
T strepToValue(std::string_view text) {
    constexpr auto attributes = T::attributes();
    std::array<Rook::String, attributes.size()> values;
    values.front() = desAttrPre(text, T::typeName, attributes.front().name);
    for (std::size_t i = 1; i + 1 < values.size(); ++i)
        values[i] = desAttrIntra(text, attributes[i].name);
    values.back() = desAttrPost(text, attributes.back().name);
    if (!text.empty())
        throw AttributeFormatException("text behind a value");
    return std::apply([](auto const&... each) { return T(each...); }, values);
}

/// Throws an AttributeFormatException that names the argument, counted from 1.
template <class T>
T constructorArgument(std::span<Rook::String const> arguments, std::size_t index) {
    try {
        return strepToValue<T>(arguments[index]);
    } catch (AttributeFormatException const& fault) {
        throw AttributeFormatException("constructor argument " + std::to_string(index + 1) + ": " +
                                       fault.what());
    }
}

/// Calls a factory with arguments in their string forms, read from first to last. Throws
/// AttributeFormatException.
template <class Result, class... Parameters>
Result construct(Result (*factory)(Parameters...), std::span<Rook::String const> arguments) {
    if (arguments.size() != sizeof...(Parameters))
        throw AttributeFormatException("expected " + std::to_string(sizeof...(Parameters)) +
                                       " constructor arguments, not " +
                                       std::to_string(arguments.size()));
    std::size_t taken = 0;
    auto const take = [&]<class T>(std::type_identity<T>) {
        return constructorArgument<T>(arguments, taken++);
    };
    std::tuple<std::remove_cvref_t<Parameters>...> const values{
        take(std::type_identity<std::remove_cvref_t<Parameters>>())...};
    return std::apply(factory, values);
}

} // namespace Fen
