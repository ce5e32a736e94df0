// The choice of the file-load check, and the built-in check that allows every file.
#include <KeldaBase/DynFileLoadCheck.h>

#include <mutex>

#include <dlfcn.h>

#include "Tracing.h"

// Taken by reference, as every factory takes it.
FileLoadCheckNoOp::FileLoadCheckNoOp(std::string const& fileType) // NOLINT(modernize-pass-by-value)
    : fileType_(fileType) {}

int FileLoadCheckNoOp::parse() {
    MFI_TRACE(8, "virtual int FileLoadCheckNoOp::parse()");
    return -1;
}

bool FileLoadCheckNoOp::canLoad(std::string const& /*dir*/, std::string const& /*file*/) {
    MFI_TRACE(8, "virtual bool FileLoadCheckNoOp::canLoad(const string&, const string&)");
    return true;
}

std::string const& FileLoadCheckNoOp::fileType() {
    MFI_TRACE(8, "virtual const string& FileLoadCheckNoOp::fileType()");
    return fileType_;
}

bool FileLoadCheckNoOp::parsed() {
    MFI_TRACE(8, "virtual bool FileLoadCheckNoOp::parsed()");
    return false;
}

FileLoadCheck* FileLoadCheckNoOp::getNew(std::string const& fileType) {
    return new FileLoadCheckNoOp(fileType);
}

bool DynFileLoadCheck::initialized_ = false;
DynFileLoadCheck::Factory DynFileLoadCheck::getNewPtr_ = nullptr;

namespace {

using FactoryGetter = DynFileLoadCheck::Factory (*)();

// The factory that a plug-in offers; null when there is none.
DynFileLoadCheck::Factory pluginFactory() {
    void* library = ::dlopen("libPluginLoader.so", RTLD_NOW);
    if (library == nullptr) {
        MFI_TRACE(1, "getAnotherImpl dlopen of libPluginLoader unsuccessful");
        library = RTLD_NEXT;
    } else {
        MFI_TRACE(9, "getAnotherImpl dlopen of libPluginLoader successful");
    }
    void* const symbol = ::dlsym(library, "getFileLoadCheckFactory");
    if (symbol == nullptr)
        return nullptr;
    auto const factory = reinterpret_cast<FactoryGetter>(symbol)();
    auto* const pointer = reinterpret_cast<void*>(factory);
    MFI_TRACE(3, "getAnotherImpl returned ptr {}", fmt::ptr(pointer));
    MFI_TRACE(9, "DynFileLoadCheck returned ptr is {} cast ptr is {}", fmt::ptr(pointer),
              fmt::ptr(pointer));
    return factory;
}

} // namespace

void DynFileLoadCheck::chooseFactory() {
    getNewPtr_ = pluginFactory();
    if (getNewPtr_ != nullptr) {
        MFI_TRACE(9, "Using external FileLoadCheck implementation");
    } else {
        getNewPtr_ = FileLoadCheckNoOp::getNew;
        MFI_TRACE(9, "Using KeldaBase FileLoadCheck implementation");
    }
    initialized_ = true;
}

namespace {

std::once_flag factoryChosen;

} // namespace

DynFileLoadCheck::DynFileLoadCheck(std::string const& fileType) {
    std::call_once(factoryChosen, chooseFactory);
    check_.reset(getNewPtr_(fileType));
    // A factory that fails leaves the built-in check: every file may be read.
    if (!check_)
        check_.reset(FileLoadCheckNoOp::getNew(fileType));
}

DynFileLoadCheck::~DynFileLoadCheck() = default;
