#include "ZelshCall.h"

#include <arpa/inet.h>
#include <CLI/CLI.hpp>

#include "ZELSH.h"

namespace Zelsh
{
namespace
{
/// HOST, HOST:PORT.
Endpoint ParseEndpoint(const std::string& option, const std::string& text)
{
    const std::size_t colon = text.find(':');
    Endpoint endpoint = {text.substr(0, colon), std::nullopt};
    if (endpoint.host.empty()) {
        throw WrongCall(option + ": " + text + ": expected HOST or HOST:PORT");
    }
    if (colon == std::string::npos) {
        return endpoint;
    }
    unsigned long port = 0;
    if (strtoul_limit_check(text.c_str() + colon + 1, 10, UINT16_MAX, &port) == 0 || port == 0) {
        throw WrongCall(option + ": " + text + ": expected a port from 1 to 65535");
    }
    endpoint.port = static_cast<std::uint16_t>(port);
    return endpoint;
}

Endpoint ParseListenAddress(const std::string& text)
{
    Endpoint endpoint = ParseEndpoint("--listen", text);
    in_addr address = {};
    if (inet_pton(AF_INET, endpoint.host.c_str(), &address) != 1) {
        throw WrongCall("--listen: " + text + ": expected an IPv4 address");
    }
    return endpoint;
}

/// The parser, and where it puts what it has read.
class CallParser
{
public:
    CallParser();
    CallParser(const CallParser&) = delete;
    CallParser& operator=(const CallParser&) = delete;

    ProgramCall Parse(int count, const char* const* arguments);

private:
    CLI::App app_;
    ProgramCall call_;
    std::optional<std::string> listen_;
    std::optional<std::string> connect_;
};

CallParser::CallParser()
    : app_("The kernel information shell. Without -c and -f it reads lines from its input.", "zelsh")
{
    app_.set_version_flag("--version", "zelsh " CONFIGSTORECTL_VERSION "\n", "print the version");
    CLI::Option* line = app_.add_option("-c", call_.line, "run one line")->type_name("LINE");
    CLI::Option* file = app_.add_option("-f", call_.file, "run the lines of a file")->type_name("FILE");
    CLI::Option* format = app_.add_option("--format", call_.format, "how results are printed: default, raw or python");
    format->type_name("FORMAT")->check(CLI::IsMember({"default", "raw", "python"}));
    CLI::Option* root = app_.add_option("--root", call_.root, "look at the host whose files are below DIR");
    root->type_name("DIR")->check(CLI::ExistingDirectory);
    CLI::Option* daemon = app_.add_flag("--daemon", call_.daemon, "serve the shell on TCP, in the background");
    app_.add_option("--listen", listen_, "where the daemon listens (0.0.0.0:56303)")
        ->type_name("ADDR[:PORT]")
        ->needs(daemon);
    CLI::Option* connect = app_.add_option("--connect", connect_, "run lines on a daemon (port 56303)");
    connect->type_name("HOST[:PORT]");
    app_.add_flag("--binary", call_.binary, "talk to the daemon in binary mode")->needs(connect);
    line->excludes(file);
    daemon->excludes(line)->excludes(file)->excludes(connect);
    connect->excludes(format)->excludes(root);
}

ProgramCall CallParser::Parse(int count, const char* const* arguments)
{
    try {
        app_.parse(count, arguments);
    } catch (const CLI::CallForHelp&) {
        call_.text = app_.help();
    } catch (const CLI::CallForVersion& version) {
        call_.text = version.what();
    } catch (const CLI::ParseError& error) {
        throw WrongCall(error.what());
    }
    if (listen_) {
        call_.listen = ParseListenAddress(*listen_);
    }
    if (connect_) {
        call_.connect = ParseEndpoint("--connect", *connect_);
    }
    return call_;
}
}  // namespace

ProgramCall UnderstandCall(int count, const char* const* arguments)
{
    return CallParser().Parse(count, arguments);
}
}  // namespace Zelsh
