// An observer that is told everything and does nothing about it.
#include <KeldaBase/LoadObserver.h>

namespace Kelda {

LoadObserver::~LoadObserver() = default;

void LoadObserver::fileOpened(Rook::String const& /*directory*/, Places /*places*/) {}
void LoadObserver::fileClosed(Places /*places*/) {}
void LoadObserver::fileSkipped(Rook::String const& /*directory*/, std::string_view /*name*/,
                               SkipReason /*reason*/) {}
void LoadObserver::preinitLine(PreinitLine const& /*line*/, Places /*places*/) {}
void LoadObserver::mountLine(MountLine const& /*line*/, Places /*places*/) {}
void LoadObserver::recordChanged(Rook::String const& /*path*/, MountArgs const* /*before*/,
                                 MountArgs const& /*after*/, Places /*places*/) {}
void LoadObserver::flagsInherited(Rook::String const& /*path*/, Rook::String const& /*parent*/,
                                  Fen::MountTable::Flags /*before*/,
                                  Fen::MountTable::Flags /*after*/) {}
void LoadObserver::tokenBound(Rook::String const& /*token*/, Rook::String const& /*value*/,
                              Places /*places*/) {}
void LoadObserver::aliasDefined(Rook::String const& /*name*/, std::string_view /*expression*/,
                                Rook::String const& /*value*/, Places /*places*/) {}
void LoadObserver::aliasUsed(Rook::String const& /*name*/, Rook::String const& /*value*/,
                             Places /*places*/) {}
void LoadObserver::groupOpened(std::string_view /*name*/, unsigned char /*priority*/,
                               Places /*places*/) {}
void LoadObserver::included(std::string_view /*pattern*/, int /*files*/, Places /*places*/) {}
void LoadObserver::keywordLine(std::string_view /*keyword*/, std::string_view /*line*/,
                               Places /*places*/) {}

} // namespace Kelda
