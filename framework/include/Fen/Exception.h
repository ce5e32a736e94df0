// The framework's exceptions. Each carries one text, what(), written for the person who reads it.
#pragma once

#include <stdexcept>
#include <string>

namespace Fen {

class Exception : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~Exception() override;
};

// A fault in what an agent was given: a file, a path, an agent string.
class AgentException : public Exception {
  public:
    using Exception::Exception;
    ~AgentException() override;
};

// An operation that this flavour of an object does not offer.
class NoImplementationException : public Exception {
  public:
    using Exception::Exception;
    ~NoImplementationException() override;
};

// A null was given to an operation that changes an object.
class NullArgumentException : public Exception {
  public:
    using Exception::Exception;
    ~NullArgumentException() override;
};

// An optional was read that holds nothing.
class BadOptionalAccess : public Exception {
  public:
    using Exception::Exception;
    ~BadOptionalAccess() override;
};

// A text from which a value cannot be read.
class AttributeFormatException : public Exception {
  public:
    using Exception::Exception;
    ~AttributeFormatException() override;
};

} // namespace Fen
