#include "ZelStatedFacts.h"

#include <charconv>
#include <cstdint>

#include "CSLogger.h"
#include "ZelJsonData.h"
#include "ZelKernelFacts.h"
#include "ZelParamList.h"

using NimbConfigStore::JsonValue;

namespace
{
/// The place of the data; a missing member leads to null.
struct Place
{
    const JsonValue* value;
    bool instanceFound;
    std::string path;
};

void Descend(Place& place, const std::string& name)
{
    place.path += "/" + name;
    if (place.value == nullptr || !place.value->IsObject()) {
        place.value = nullptr;
        return;
    }
    const JsonValue wanted(rapidjson::StringRef(name.c_str(), name.size()));
    const auto member = place.value->FindMember(wanted);
    place.value = member != place.value->MemberEnd() ? &member->value : nullptr;
}

/// Follows a definition's path, each "<ARGUMENT>" replaced by its argument.
Place FindPlace(const JsonValue& facts, std::string_view path, const ZEL_ParamList& instance)
{
    Place place{&facts, true, ""};
    Descend(place, "tree");
    place.path.clear();
    for (std::size_t argument = 0; !path.empty();) {
        path.remove_prefix(1);  // the slash
        const std::string_view component = path.substr(0, path.find('/'));
        const bool isInstance = component.starts_with('<');
        Descend(place, isInstance ? instance.Name(argument++) : std::string(component));
        place.instanceFound = place.instanceFound && !(isInstance && place.value == nullptr);
        path.remove_prefix(component.size());
    }
    return place;
}
/// Numbers are written as the kernel would: in decimal, without leading zeros.
bool IsInstanceName(const std::string& name, ZEL_DataKind kind)
{
    if (kind != ZEL_DATA_UINT64) {
        return !name.empty() && name.find('\0') == std::string::npos;
    }
    std::uint64_t number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    return std::to_string(number) == name;
}
}  // namespace

ORV_ReturnStatus GetStatedFact(const ZEL_NodeDefinition& leaf, const ZEL_ParamList& instance, std::string& data)
{
    const KernelFacts facts = LoadKernelFacts();
    if (facts == nullptr) {
        return ORV_FAILURE;
    }
    const Place place = FindPlace(*facts, leaf.path, instance);
    if (place.value == nullptr) {
        return place.instanceFound ? ORV_NOT_SUPPORTED : ORV_NOT_FOUND;
    }
    std::string reason;
    if (!ZelDataOfJson(*leaf.outputType, *place.value, data, reason)) {
        CSLogger::Log(CSLogger::ERROR, "The kernel's facts in %s: %s: %s", KERNEL_FACTS_FILE, place.path.c_str(),
                      reason.c_str());
        return ORV_FAILURE;
    }
    return ORV_OK;
}

ORV_ReturnStatus ListStatedInstances(const ZEL_NodeDefinition& branch, const ZEL_ParamList& above,
                                     std::vector<std::string>& names)
{
    const KernelFacts facts = LoadKernelFacts();
    if (facts == nullptr) {
        return ORV_FAILURE;
    }
    const Place place = FindPlace(*facts, branch.path, above);
    if (!place.instanceFound) {
        return ORV_NOT_FOUND;
    }
    if (place.value == nullptr || !place.value->IsObject()) {
        return ORV_OK;
    }
    for (const auto& instance : place.value->GetObject()) {
        const std::string name(instance.name.GetString(), instance.name.GetStringLength());
        if (IsInstanceName(name, branch.instanceKind)) {
            names.push_back(name);
        }
    }
    return ORV_OK;
}
