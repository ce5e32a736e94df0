// Prints the mount paths of one agent: consumer PREINIT_DIRECTORY PROFILE_DIRECTORY AGENT
#include <cstdio>
#include <exception>

#include <KeldaBase/AgentMountFileInfo.h>
#include <KeldaBase/DynCell.h>
#include <KeldaUtil/MountFlags.h>

int main(int argc, char** argv) {
    if (argc != 4)
        return 2;
    try {
        Kelda::AgentMountFileInfo parser(false, argv[1], argv[2], true, "DefaultMountGroup");
        parser.addAgent(argv[3], "");
        parser.doInit();
        for (auto const& [path, args] : parser.pathMountArgsMap())
            std::printf("%s %s %s\n", path.c_str(), args.type.c_str(),
                        KeldaUtil::mountTableFlagsToString(args.flags).c_str());
        return DynCell::cellId() == 0 ? 1 : 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
