/// @file
/// The framework's exceptions. Each carries one text, what(), written for the person who reads it.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include <Fen/Export.h>

/// The framework's entities: exceptions, assertions, values made of attributes, collections.
namespace Fen {

/// The base of all; catch it to catch any of them.
class FEN_API Exception : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~Exception() override;
};

/// A fault in what an agent was given: a file, a path, an agent string.
class FEN_API AgentException : public Exception {
  public:
    using Exception::Exception;
    ~AgentException() override;
};

/// An operation that this flavour of an object does not offer.
class FEN_API NoImplementationException : public Exception {
  public:
    using Exception::Exception;
    ~NoImplementationException() override;
};

/// A null was given to an operation that changes an object.
class FEN_API NullArgumentException : public Exception {
  public:
    using Exception::Exception;
    ~NullArgumentException() override;
};

/// An optional was read that holds nothing.
class FEN_API BadOptionalAccess : public Exception {
  public:
    using Exception::Exception;
    ~BadOptionalAccess() override;
};

/// A text from which a value cannot be read.
class FEN_API AttributeFormatException : public Exception {
  public:
    /// `what` tells what was expected, `position` where.
    explicit AttributeFormatException(std::string const& what, std::size_t position = 0)
        : Exception(what), position_(position) {}
    ~AttributeFormatException() override;

    /// Where in the text reading stopped: the offset of the first piece that does not fit.
    /// 0 when the fault is in no one text.
    std::size_t position() const noexcept { return position_; }

  private:
    std::size_t position_;
};

} // namespace Fen
