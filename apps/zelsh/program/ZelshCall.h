#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace Zelsh
{
/// An address and a port, either of which may have been left out.
struct Endpoint
{
    std::string host;
    std::optional<std::uint16_t> port;
};

/// A call of the program, understood.
struct ProgramCall
{
    std::string text;  ///< help or version, to be printed instead of anything else
    std::optional<std::string> line;
    std::optional<std::string> file;
    std::string format = "default";
    std::string root;  ///< empty: the host itself
    bool daemon = false;
    std::optional<Endpoint> listen;
    std::optional<Endpoint> connect;
    bool binary = false;
};

class WrongCall : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// @throws WrongCall
ProgramCall UnderstandCall(int count, const char* const* arguments);
}  // namespace Zelsh
