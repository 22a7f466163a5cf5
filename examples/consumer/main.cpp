// A program of its own on the installed library: which configuration did the last boot fail to restore?
// usage: consumer [ROOT]   (another host root than "/")
#include <HostUtil.h>
#include <NimbConfigStore.h>

#include <cstdio>

int main(int argc, char** argv)
{
    try {
        SetHostRoot(argc > 1 ? argv[1] : "/");
        const auto failures = NimbConfigStore::GetBootTimeRestoreFailures();
        for (const NimbConfigStore::FailureRecord& record : failures) {
            std::printf("%s/%s/%s\n", record.component.c_str(), record.configGroup.c_str(), record.name.c_str());
        }
        return failures.empty() ? 0 : 1;
    } catch (const NimbConfigStore::ConfigStoreException& failure) {
        std::fprintf(stderr, "consumer: %d: %s\n", failure.code(), failure.what());
        return 2;
    }
}
