// A program of its own on the installed library: how did the last boot go, and what shall the next one apply?
// usage: consumer ROOT DOCUMENT   (the host below the folder ROOT, "/" for this machine; a desired document)
#include <HostUtil.h>
#include <NimbConfigStore.h>
#include <NimbSchemaStore.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>

namespace
{
void ReportLastBoot()
{
    const rapidjson::Document record = NimbConfigStore::getBootApplyRecord();
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    record.Accept(writer);
    std::cout << "last boot: " << text.GetString() << '\n';
    for (const NimbConfigStore::FailureRecord& row : NimbConfigStore::GetBootTimeRestoreFailures()) {
        std::cout << "not restored: " << row.component << '/' << row.configGroup << '/' << row.name << '\n';
    }
}

bool Stage(const char* path)
{
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto desired = NimbConfigStore::CreateDocumentFromString(text);
    const auto schemas = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    if (!NimbConfigStore::ValidateDesiredDocument(*desired->document, schemas)) {
        std::cerr << "consumer: " << path << ": does not keep to the schemas; the log names every finding\n";
        return false;
    }
    NimbConfigStore::SetDesiredUserConfig(*desired->document);
    std::cout << "staged for the next boot: " << path << '\n';
    return true;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: consumer ROOT DOCUMENT\n";
        return 2;
    }
    try {
        SetHostRoot(argv[1]);
        ReportLastBoot();
        return Stage(argv[2]) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << "consumer: " << failure.what() << '\n';
        return 1;
    }
}
