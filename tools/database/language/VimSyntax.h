// The syntax files of the editor Vim, made from the words of both file languages.
#pragma once

#include <string>

#include "database/Device.h"

namespace KeldaDatabase {

/// The file syntax/kelda-preinit.vim or syntax/kelda-profile.vim.
std::string vimSyntax(FileFamily family);

} // namespace KeldaDatabase
