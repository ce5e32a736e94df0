/// @file
/// Collections of values that are shared through counted references, keyed by an attribute of their
/// elements.
///
/// A collection type is a declaration on top of one of the two kinds here: it names its element,
/// the operation of the element that tells its key, and its own operations.
///
///     class LampCol : public Fen::OrderedCollection<Lamp, &Lamp::place> {
///       public:
///         void lampIs(Lamp const& lamp) { elementIs(lamp); }
///         void lampDel(Rook::String const& place) { elementDel(place); }
///         void lampDelAll() { elementDelAll(); }
///         Lamp lamp(Rook::String const& place) const { return element(place); }
///     };
///
/// An element is a value or a Rook::Ptr to a node. A look-up that finds nothing gives the element
/// that is constructed from nothing: a value that is false, a null Rook::Ptr.
///
/// Threads: a collection is not locked. Any number of threads may read one that none changes.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include <Fen/Exception.h>
#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace Fen {

namespace Detail {

template <class Element>
struct IsPtr : std::false_type {};
template <class T>
struct IsPtr<Rook::Ptr<T>> : std::true_type {};

/// The key of an element, and of a key itself; so that containers look up by key alone.
template <class Element, auto KeyOf>
struct Key {
    static Rook::String const& of(Rook::String const& key) noexcept { return key; }
    static Rook::String const& of(Element const& element) noexcept {
        if constexpr (IsPtr<Element>::value)
            return std::invoke(KeyOf, *element);
        else
            return std::invoke(KeyOf, element);
    }
};

template <class Element, auto KeyOf>
struct KeyLess {
    using is_transparent = void;
    template <class A, class B>
    bool operator()(A const& a, B const& b) const noexcept {
        return Key<Element, KeyOf>::of(a) < Key<Element, KeyOf>::of(b);
    }
};

template <class Element, auto KeyOf>
struct KeyEqual {
    using is_transparent = void;
    template <class A, class B>
    bool operator()(A const& a, B const& b) const noexcept {
        return Key<Element, KeyOf>::of(a) == Key<Element, KeyOf>::of(b);
    }
};

template <class Element, auto KeyOf>
struct KeyHash {
    using is_transparent = void;
    template <class T>
    std::size_t operator()(T const& value) const noexcept {
        return std::hash<Rook::String>()(Key<Element, KeyOf>::of(value));
    }
};

} // namespace Detail

/// What both kinds of collections offer. An element's key must not change while it is inside.
template <class Element, class Container>
class Collection : public Rook::Node {
  public:
    using value_type = Element; ///< a value or a Rook::Ptr
    /// Goes over the elements, which it cannot change.
    using const_iterator = typename Container::const_iterator;
    using iterator = const_iterator; ///< the same

    /// The first element. Adding, replacing or removing one may end an iteration.
    const_iterator begin() const noexcept { return elements_.begin(); }
    /// Behind the last element.
    const_iterator end() const noexcept { return elements_.end(); }
    /// The number of elements.
    std::size_t size() const noexcept { return elements_.size(); }
    /// Whether there is no element.
    bool empty() const noexcept { return elements_.empty(); }

  protected:
    Collection() = default;
    ~Collection() override = default;

    /// Adds an element; one that has the same key is replaced. A null Rook::Ptr throws
    /// NullArgumentException and changes nothing.
    void elementIs(Element const& element) {
        if constexpr (Detail::IsPtr<Element>::value)
            if (element == nullptr)
                throw NullArgumentException("a collection holds no null element");
        // Elements often come in the order of their keys: try behind the last one first.
        auto const before = elements_.size();
        auto const place = elements_.insert(elements_.end(), element);
        if (elements_.size() != before)
            return;
        Element other(element);
        auto node = elements_.extract(place);
        std::swap(node.value(), other);
        elements_.insert(std::move(node));
        // The former element goes here, last: its end may look into the collection.
    }
    /// Removes the element with this key and returns it, if there is one.
    Element elementDel(Rook::String const& key) {
        auto const found = elements_.find(key);
        return found == elements_.end() ? Element() : std::move(elements_.extract(found).value());
    }
    /// Removes every element and gives back the memory.
    void elementDelAll() noexcept { Container().swap(elements_); }
    /// The element with this key, or the one that is constructed from nothing.
    Element element(Rook::String const& key) const {
        auto const found = elements_.find(key);
        return found == elements_.end() ? Element() : *found;
    }

  private:
    Container elements_;
};

/// A collection in ascending order of its keys, compared byte by byte.
template <class Element, auto KeyOf>
using OrderedCollection = Collection<Element, std::set<Element, Detail::KeyLess<Element, KeyOf>>>;

/// A collection in no particular order.
template <class Element, auto KeyOf>
using HashedCollection =
    Collection<Element, std::unordered_set<Element, Detail::KeyHash<Element, KeyOf>,
                                           Detail::KeyEqual<Element, KeyOf>>>;

} // namespace Fen
