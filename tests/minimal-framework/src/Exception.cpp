#include <Fen/Exception.h>

namespace Fen {

Exception::~Exception() = default;
AgentException::~AgentException() = default;
NoImplementationException::~NoImplementationException() = default;
NullArgumentException::~NullArgumentException() = default;
BadOptionalAccess::~BadOptionalAccess() = default;
AttributeFormatException::~AttributeFormatException() = default;

} // namespace Fen
