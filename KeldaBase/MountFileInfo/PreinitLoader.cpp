// The preinit language: one kind of line, `[CONFIG:]path,type[,attribute]`.
#include <KeldaBase/MountFileInfo.h>

#include <cstring>

#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"

namespace Kelda {

namespace {

constexpr std::string_view configKeyword = "CONFIG:";

} // namespace

int MountFileInfo::preinitLoader(FILE* file) {
    MFI_TRACE(8, "( file : {} )", currentFileName());
    int step = 1;
    LineBuffer line;
    while (readLogicalLine(file, line, step)) {
        removeBlanks(line.data());
        if (line[0] != '\0')
            handlePreinitPathLine(line);
    }
    return 1;
}

void MountFileInfo::handlePreinitPathLine(LineBuffer& buffer) {
    MFI_TRACE(8, "( buffer : \"{}\" )", buffer.data());
    char* const firstComma = std::strchr(buffer.data(), ',');
    if (firstComma == nullptr) {
        reportAndTrace(fmt::format("preinit syntax error: {}", buffer.data()));
        return;
    }
    // Field 3, the attribute, is the rest of the line; field 2, the type, stands before it.
    char* const secondComma = std::strchr(firstComma + 1, ',');
    char const* const attribute = secondComma == nullptr ? nullptr : secondComma + 1;
    if (secondComma != nullptr)
        *secondComma = '\0';
    // Field 1, the path, without the prefix and one slash at its end.
    bool const endsInSlash = firstComma != buffer.data() && firstComma[-1] == '/';
    *(endsInSlash ? firstComma - 1 : firstComma) = '\0';
    bool const isConfig = startsWithIgnoringCase(buffer.data(), configKeyword);
    LineBuffer path;
    copyText(path, buffer.data() + (isConfig ? configKeyword.size() : 0));
    convertPath(path);

    auto const attr = validateAndRecordPathAttr(path.data(), attribute);
    if (attr == PreinitAttr::invalid)
        return;
    if (isConfig && !validateAndRecordPathConfigInfo(path.data(), attr))
        return;
    if (observer_ != nullptr) [[unlikely]]
        observer_->preinitLine({path.data(), firstComma + 1, attr, isConfig}, currentFiles_);
    wildcardPath(path);
    pathTypeMapIs(path.data(), firstComma + 1);
    if (attr != PreinitAttr::createOnMount)
        addParentPathTypes(path.data());
}

} // namespace Kelda
