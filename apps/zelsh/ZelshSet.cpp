#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ZelshCommands.h"
#include "ZelshInput.h"
#include "ZelshPath.h"
#include "ZelshValue.h"
#include "ZelshWords.h"

namespace Zelsh
{
namespace
{
struct Input
{
    std::string name;  ///< of a structure's member, else empty
    const ZEL_Type* type;
};

std::vector<Input> InputsOf(const ZEL_Type& type)
{
    if (!IsStructure(type)) {
        return {{"", &type}};
    }
    std::vector<Input> inputs;
    for (std::size_t i = 0; i < type.memberCount; ++i) {
        inputs.push_back({type.members[i].name, type.members[i].type});
    }
    return inputs;
}

/// "one value (uint32)", "2 values (warningPercent, errorPercent)".
std::string Expectation(const std::vector<Input>& inputs)
{
    if (inputs.size() == 1) {
        return "one value: " + ExpectationOf(*inputs[0].type);
    }
    std::string names;
    for (const Input& input : inputs) {
        names += (names.empty() ? "" : ", ") + input.name;
    }
    return std::to_string(inputs.size()) + " values (" + names + ")";
}

/// False, after a message, when the values are not what the leaf takes.
bool ParseAll(const Call& call, const std::vector<Input>& inputs, std::vector<Parameter>& parameters)
{
    const std::size_t given = static_cast<std::size_t>(call.count - 2);
    if (given != inputs.size()) {
        ZELSHError("set: %s: expected %s, found %zu", call.arguments[1], Expectation(inputs).c_str(), given);
        return false;
    }
    for (std::size_t i = 0; i < given; ++i) {
        const char* word = call.arguments[i + 2];
        std::optional<Parameter> parameter = ParseParameter(*inputs[i].type, Unquote(word));
        if (!parameter) {
            const std::string name = inputs[i].name.empty() ? "" : inputs[i].name + ": ";
            ZELSHError("set: %s: %sexpected %s, found \"%s\"", call.arguments[1], name.c_str(),
                       ExpectationOf(*inputs[i].type).c_str(), Unquote(word).c_str());
            return false;
        }
        parameters.push_back(std::move(*parameter));
    }
    return true;
}

ORV_ReturnStatus Add(ZEL_ParamList* list, const Parameter& parameter)
{
    const auto* number = std::get_if<std::int64_t>(&parameter);
    return number != nullptr ? ZEL_ParamListAddInt(list, *number)
                             : ZEL_ParamListAddString(list, std::get<std::string>(parameter).c_str());
}

ORV_ReturnStatus SetLeaf(const ZELSHPath& path, const std::vector<Parameter>& parameters)
{
    const ParamList input(ZEL_ParamListCreate(0, static_cast<int>(parameters.size())), &ZEL_ParamListDestroy);
    ORV_ReturnStatus status = input != nullptr ? ORV_OK : ORV_NO_MEMORY;
    for (const Parameter& parameter : parameters) {
        status = status == ORV_OK ? Add(input.get(), parameter) : status;
    }
    const ZEL_NodeID node = DefinitionOf(path).node;
    return status == ORV_OK ? ZEL_Set(node, InstanceArguments(path).get(), input.get(), nullptr, nullptr) : status;
}
}  // namespace

ORV_ReturnStatus Set(const Call& call)
{
    if (call.count < 2) {
        ZELSHError("set: expected the path of a leaf and its value");
        return ORV_BAD_PARAM;
    }
    const std::optional<ZELSHPath> path = ResolveArgument("set", call.arguments[1]);
    if (!path) {
        return ORV_NOT_FOUND;
    }
    if (!IsLeaf(*path)) {
        ZELSHError("set: %s: expected a leaf, found a branch", call.arguments[1]);
        return ORV_BAD_PARAM;
    }
    const ZEL_Type* type = DefinitionOf(*path).inputType;
    if (type == nullptr) {
        return ORV_READ_ONLY;
    }
    std::vector<Parameter> parameters;
    return ParseAll(call, InputsOf(*type), parameters) ? SetLeaf(*path, parameters) : ORV_BAD_PARAM;
}
}  // namespace Zelsh
