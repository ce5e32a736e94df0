// Which path may have been meant by one that is not there.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/paths/PathPattern.h"

namespace KeldaTool {

/// Looks for the path that comes nearest to the wanted one. Segments that have a common instance
/// ("2" and "*") are alike. Near is a path that differs
/// - not at all, or else
/// - in the case of letters, or else
/// - in one segment of three letters or more, by one letter too few, too many or wrong, or by two
///   that changed places.
class NearestPath {
  public:
    explicit NearestPath(std::string_view wanted);

    /// Whether the path is nearer than all before it; of paths that are equally near it is the
    /// first one in byte order.
    bool consider(std::string_view path);

    /// The nearest path, with the wanted segments where they are alike.
    std::optional<std::string> nearest() const;

  private:
    enum class Distance { none, inCase, oneError, far };
    Distance distanceOf(std::string_view path) const;

    std::vector<std::string> segments_;
    std::vector<KeldaDatabase::PathPattern> patterns_; // of the segments
    Distance distance_ = Distance::far;
    std::string nearest_;
};

} // namespace KeldaTool
