/// @file
/// Values that are made of named attributes, and how values are written as text and read back.
///
/// A type declares its name and its attributes; equality, the truth test and the string form follow
/// from that:
///
///     class Lamp : public Fen::AttributeValue<Lamp> {
///       public:
///         static constexpr std::string_view typeName = "Example::Lamp";
///         static constexpr auto attributes() {
///             return std::array{Fen::Attribute<Lamp>{"place", &Lamp::place_},
///                               Fen::Attribute<Lamp>{"colour", &Lamp::colour_}};
///         }
///         Lamp() = default;
///         Lamp(Rook::String place, Rook::String colour);
///         ...
///     };
///
/// The string form ("strep") of such a value is
///
///     Example::Lamp(place: "hall", colour: "red")
///
/// It is one line of printable ASCII: between the quotes, a quote and a backslash stand behind a
/// backslash, and every byte that is not printable ASCII is written as a backslash, an x and two
/// hexadecimal digits. So every string comes back as it was. Readers take blanks between the pieces
/// as they come, and any byte but control characters between quotes.
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
#include <utility>

#include <Fen/Exception.h>
#include <Fen/Export.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace Fen {

/// One attribute of a value: its name and where the value keeps it.
template <class Owner>
struct Attribute {
    std::string_view name;       ///< as string forms have it
    Rook::String Owner::*member; ///< where the value keeps it
};

/// A text that is being read, and the offset up to which it has been.
struct AttributeCursor {
    std::string_view text;    ///< all of it
    std::size_t position = 0; ///< in bytes
};

/// Reads the beginning of a value of the type `typeName` and its first attribute, which it returns.
/// The cursor moves behind what was read; where the text is something else,
/// AttributeFormatException tells what was expected there.
FEN_API Rook::String desAttrPre(AttributeCursor& cursor, std::string_view typeName,
                                std::string_view attributeName);
/// Reads a further attribute, as desAttrPre does.
FEN_API Rook::String desAttrIntra(AttributeCursor& cursor, std::string_view attributeName);
/// Reads the last attribute and the end of the value, as desAttrPre does.
FEN_API Rook::String desAttrPost(AttributeCursor& cursor, std::string_view attributeName);

/// Appends to `text` what desAttrPre reads.
FEN_API void serAttrPre(std::string& text, std::string_view typeName,
                        std::string_view attributeName, Rook::String const& value);
/// Appends to `text` what desAttrIntra reads.
FEN_API void serAttrIntra(std::string& text, std::string_view attributeName,
                          Rook::String const& value);
/// Appends to `text` what desAttrPost reads.
FEN_API void serAttrPost(std::string& text, std::string_view attributeName,
                         Rook::String const& value);

/// Throws AttributeFormatException unless only blanks are left of the text.
FEN_API void desEnd(AttributeCursor& cursor);

/// A type that declares its attributes, two or more.
template <class T>
concept HasAttributes = requires {
    std::string_view(T::typeName);
    T::attributes();
};

/// How many attributes a type declares.
template <HasAttributes T>
constexpr std::size_t attributeCount = std::tuple_size_v<decltype(T::attributes())>;

/// The string form of a string, such as "a/b", with the quotes.
FEN_API Rook::String valueToStrep(Rook::String const& value);
/// The string form of a truth value: `true` or `false`. It takes nothing but a bool; a pointer to
/// characters would turn into one.
template <std::same_as<bool> T>
Rook::String valueToStrep(T value) {
    return value ? "true" : "false";
}
/// The string form of a value that is made of attributes.
template <HasAttributes T>
Rook::String valueToStrep(T const& value) {
    static_assert(attributeCount<T> >= 2);
    std::string text;
    constexpr auto attributes = T::attributes();
    serAttrPre(text, T::typeName, attributes.front().name, value.*attributes.front().member);
    for (std::size_t i = 1; i + 1 < attributes.size(); ++i)
        serAttrIntra(text, attributes[i].name, value.*attributes[i].member);
    serAttrPost(text, attributes.back().name, value.*attributes.back().member);
    return text;
}

namespace Detail {

FEN_API Rook::String readString(std::string_view text);
FEN_API bool readBool(std::string_view text);

template <HasAttributes T>
auto readAttributes(std::string_view text) {
    static_assert(attributeCount<T> >= 2);
    constexpr auto attributes = T::attributes();
    std::array<Rook::String, attributes.size()> values;
    AttributeCursor cursor{text};
    values.front() = desAttrPre(cursor, T::typeName, attributes.front().name);
    for (std::size_t i = 1; i + 1 < attributes.size(); ++i)
        values[i] = desAttrIntra(cursor, attributes[i].name);
    values.back() = desAttrPost(cursor, attributes.back().name);
    desEnd(cursor);
    return values;
}

template <class T>
struct NodeOf;
template <HasAttributes T>
struct NodeOf<Rook::Ptr<T>> {
    using type = T;
};

} // namespace Detail

/// The value with this string form: a Rook::String, a bool, a type that declares its attributes, or
/// for a node that does a Rook::Ptr to a new one. The latter two are constructed from their
/// attributes in the order declared. Throws AttributeFormatException for any other text.
template <class T>
T strepToValue(std::string_view text) {
    auto const make = [](auto const&... values) { return T(values...); };
    if constexpr (std::is_same_v<T, Rook::String>) {
        return Detail::readString(text);
    } else if constexpr (std::is_same_v<T, bool>) {
        return Detail::readBool(text);
    } else if constexpr (HasAttributes<T>) {
        return std::apply(make, Detail::readAttributes<T>(text));
    } else {
        using Node = typename Detail::NodeOf<T>::type;
        return std::apply([](auto const&... values) { return T(new Node(values...)); },
                          Detail::readAttributes<Node>(text));
    }
}

/// The base of a type T that declares its attributes.
template <class T>
class AttributeValue {
  public:
    /// Whether both are the same object, or all attributes are equal, compared in their order.
    bool isEq(T const& other) const noexcept {
        auto const& self = static_cast<T const&>(*this);
        if (&self == &other)
            return true;
        for (auto const& attribute : T::attributes())
            if (self.*attribute.member != other.*attribute.member)
                return false;
        return true;
    }
    /// Whether the value differs from the default-constructed one: some attribute is not empty.
    explicit operator bool() const noexcept {
        auto const& self = static_cast<T const&>(*this);
        for (auto const& attribute : T::attributes())
            if (!(self.*attribute.member).empty())
                return true;
        return false;
    }
    /// As isEq.
    friend bool operator==(T const& a, T const& b) noexcept { return a.isEq(b); }
    /// Writes the string form.
    friend std::ostream& operator<<(std::ostream& stream, T const& value) {
        return stream << valueToStrep(value);
    }

  protected:
    /// The base itself holds nothing: only a T is made, copied and destroyed.
    AttributeValue() noexcept = default;
    AttributeValue(AttributeValue const&) noexcept = default;            ///< nothing to copy
    AttributeValue& operator=(AttributeValue const&) noexcept = default; ///< nothing to copy
    ~AttributeValue() = default;
};

namespace Detail {

FEN_API void checkArgumentCount(std::size_t wanted, std::size_t given);
[[noreturn]] FEN_API void throwForArgument(std::size_t index,
                                           AttributeFormatException const& fault);

template <class T>
T readArgument(std::span<Rook::String const> arguments, std::size_t index) {
    try {
        return strepToValue<T>(arguments[index]);
    } catch (AttributeFormatException const& fault) {
        throwForArgument(index, fault);
    }
}

template <class Result, class... Parameters, std::size_t... Indices>
Result callFactory(Result (*factory)(Parameters...),
                   [[maybe_unused]] std::span<Rook::String const> arguments,
                   std::index_sequence<Indices...>) {
    // Braces read the arguments from first to last; those of a call have no order.
    std::tuple<std::remove_cvref_t<Parameters>...> values{
        readArgument<std::remove_cvref_t<Parameters>>(arguments, Indices)...};
    return std::apply(
        [factory](auto&... each) -> Result { return factory(static_cast<Parameters&&>(each)...); },
        values);
}

} // namespace Detail

/// Generic construction: calls a factory with arguments that are given in their string forms, one
/// for each of its parameters. Throws AttributeFormatException, naming the argument (counted from
/// 1) and the position in it, when one cannot be read, and when there are too few or too many.
template <class Result, class... Parameters>
Result construct(Result (*factory)(Parameters...), std::span<Rook::String const> arguments) {
    Detail::checkArgumentCount(sizeof...(Parameters), arguments.size());
    return Detail::callFactory(factory, arguments, std::index_sequence_for<Parameters...>());
}

} // namespace Fen
