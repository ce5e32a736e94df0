/// Collections of elements that each have a key: an attribute that is a Rook::String.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

#include <Fen/Exception.h>
#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace Fen {

template <class T>
Rook::String keyOf(T const& element, Rook::String const& (T::*key)() const noexcept) {
    return (element.*key)();
}
template <class T>
Rook::String keyOf(Rook::Ptr<T> const& element, Rook::String const& (T::*key)() const noexcept) {
    if (element == nullptr)
        throw NullArgumentException("null for an element");
    return (element.get()->*key)();
}

/// An element is a value, or a Rook::Ptr to a node. Where there is no element, a look-up gives one
/// that is default-constructed.
template <class Map, auto Key>
class Collection : public Rook::Node {
  public:
    using value_type = typename Map::mapped_type;

    class const_iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Collection::value_type;
        using difference_type = std::ptrdiff_t;
        using pointer = value_type const*;
        using reference = value_type const&;

        const_iterator() = default;
        explicit const_iterator(typename Map::const_iterator place) : place_(place) {}
        reference operator*() const { return place_->second; }
        pointer operator->() const { return &place_->second; }
        const_iterator& operator++() {
            ++place_;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(place_++); }
        friend bool operator==(const_iterator const&, const_iterator const&) = default;

      private:
        typename Map::const_iterator place_;
    };
    using iterator = const_iterator;

    const_iterator begin() const noexcept { return const_iterator(elements_.begin()); }
    const_iterator end() const noexcept { return const_iterator(elements_.end()); }
    std::size_t size() const noexcept { return elements_.size(); }
    bool empty() const noexcept { return elements_.empty(); }

  protected:
    void elementIs(value_type const& element) {
        elements_.insert_or_assign(keyOf(element, Key), element);
    }
    value_type elementDel(Rook::String const& key) {
        auto const node = elements_.extract(key);
        return node.empty() ? value_type() : node.mapped();
    }
    void elementDelAll() noexcept { Map().swap(elements_); }
    value_type element(Rook::String const& key) const {
        auto const found = elements_.find(key);
        return found == elements_.end() ? value_type() : found->second;
    }

  private:
    Map elements_;
};

/// In ascending order of the keys.
template <class Element, auto Key>
using OrderedCollection = Collection<std::map<Rook::String, Element>, Key>;

/// In no particular order.
template <class Element, auto Key>
using HashedCollection = Collection<std::unordered_map<Rook::String, Element>, Key>;

} // namespace Fen
