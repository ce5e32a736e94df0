#include <Fen/Exception.h>

namespace Fen {

// Defined here, not in the header, so that every library and program shares one type of each and
// can catch what another threw.
Exception::~Exception() = default;
AgentException::~AgentException() = default;
NoImplementationException::~NoImplementationException() = default;
NullArgumentException::~NullArgumentException() = default;
BadOptionalAccess::~BadOptionalAccess() = default;
AttributeFormatException::~AttributeFormatException() = default;

} // namespace Fen
