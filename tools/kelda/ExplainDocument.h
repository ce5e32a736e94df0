// The answer of kelda explain, as a JSON document.
#pragma once

#include "ExplainAnswer.h"
#include "JsonDocument.h"

namespace KeldaTool {

Json explainDocument(ExplainAnswer const& answer);

} // namespace KeldaTool
