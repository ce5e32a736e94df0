// The answer of kelda explain, as a JSON document.
#pragma once

#include "JsonDocument.h"
#include "explain/ExplainAnswer.h"

namespace KeldaTool {

Json explainDocument(ExplainAnswer const& answer);

} // namespace KeldaTool
