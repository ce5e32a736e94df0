/// The framework's exceptions.
#pragma once

#include <stdexcept>

namespace Fen {

// Each has its destructor in the framework, so that there is one such type in a process.

class Exception : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~Exception() override;
};

class AgentException : public Exception {
  public:
    using Exception::Exception;
    ~AgentException() override;
};

class NoImplementationException : public Exception {
  public:
    using Exception::Exception;
    ~NoImplementationException() override;
};

/// A null was given to a mutator.
class NullArgumentException : public Exception {
  public:
    using Exception::Exception;
    ~NullArgumentException() override;
};

class BadOptionalAccess : public Exception {
  public:
    using Exception::Exception;
    ~BadOptionalAccess() override;
};

/// A text from which a value cannot be read.
class AttributeFormatException : public Exception {
  public:
    using Exception::Exception;
    ~AttributeFormatException() override;
};

} // namespace Fen
