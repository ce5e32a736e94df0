// Recorded faults as texts that a test can compare in one piece.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <KeldaBase/MountFileInfo.h>

namespace support {

using Strings = std::vector<std::string>;

// Every fault as "FILE:LINE: MESSAGE", in order; ":-1: MESSAGE" when no file was open.
inline Strings faultList(Kelda::MountFileInfo const& parser) {
    Strings texts;
    for (auto const& fault : parser.exceptions())
        texts.push_back(std::string(fault.file.view()) + ":" + std::to_string(fault.line) + ": " +
                        std::string(fault.msg.view()));
    return texts;
}

// The traces of a flavour that goes on after each of its faults.
inline Strings continuedTraces(Kelda::MountFileInfo const& parser) {
    Strings texts;
    for (auto const& fault : parser.exceptions())
        texts.push_back("Encountered exception " +
                        std::string(Kelda::MountFileInfo::mfiExceptionToString(fault).view()) +
                        " during kelda-side parsing. Continuing...");
    return texts;
}

} // namespace support
