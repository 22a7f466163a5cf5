#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "CSLogger.h"
#include "HostUtil.h"
#include "ZelKernelFacts.h"
#include "ZelNodes.h"
#include "ZelParamList.h"
#include "ZelStatedFacts.h"

namespace
{
/// Runs what may throw; the callers of this interface know statuses only.
template <typename Call>
ORV_ReturnStatus Guarded(Call call) noexcept
{
    try {
        const ZEL_Snapshot oneLook;  // however often one answer needs the facts
        return call();
    } catch (const std::bad_alloc&) {
        return ORV_NO_MEMORY;
    } catch (const std::exception& error) {
        CSLogger::Log(CSLogger::ERROR, "Kernel information cannot be given: %s", error.what());
        return ORV_FAILURE;
    } catch (...) {
        return ORV_FAILURE;
    }
}

const ZEL_ParamList& OrEmpty(const ZEL_ParamList* list)
{
    static const ZEL_ParamList EMPTY{};
    return list != nullptr ? *list : EMPTY;
}

bool IsText(ZEL_DataKind kind)
{
    return kind >= ZEL_DATA_TEXT && kind <= ZEL_DATA_IPV6;
}

bool HasKinds(const ZEL_ParamList& list, const std::vector<ZEL_DataKind>& kinds)
{
    const auto isOfKind = [](const ZEL_ParamList::Value& value, ZEL_DataKind kind) {
        return std::holds_alternative<std::string>(value) == IsText(kind);
    };
    return std::equal(list.values.begin(), list.values.end(), kinds.begin(), kinds.end(), isOfKind);
}

std::vector<ZEL_DataKind> InputKinds(const ZEL_Type& type)
{
    if (type.kind != ZEL_DATA_STRUCT) {
        return {type.kind};
    }
    std::vector<ZEL_DataKind> kinds;
    for (std::size_t i = 0; i < type.memberCount; ++i) {
        kinds.push_back(type.members[i].type->kind);
    }
    return kinds;
}

ORV_ReturnStatus CopyOut(const std::string& data, ZEL_DataKind kind, void* buffer, std::size_t size)
{
    if (kind == ZEL_DATA_TEXT) {
        const std::size_t length = std::min(data.size(), size - 1);
        std::memcpy(buffer, data.data(), length);
        static_cast<char*>(buffer)[length] = '\0';
        return ORV_OK;
    }
    if (data.size() > size) {
        return ORV_LIMIT_EXCEEDED;
    }
    std::memcpy(buffer, data.data(), data.size());
    return ORV_OK;
}

/// What the facts of another root state goes before what the /proc and /sys captured there tell.
ORV_ReturnStatus GetInOtherRoot(const ZelPlacedNode& node, const ZEL_ParamList& instance, std::string& data)
{
    const ORV_ReturnStatus own = node.row->inEveryRoot ? node.row->get(instance, data) : ORV_NOT_FOUND;
    if (own != ORV_NOT_FOUND) {
        return own;
    }
    const ORV_ReturnStatus stated = GetStatedFact(node.definition, instance, data);
    const bool known = stated != ORV_NOT_FOUND && stated != ORV_NOT_SUPPORTED;
    if (node.row->inEveryRoot) {
        return known ? stated : own;
    }
    return known || !HasCapturedKernel() ? stated : node.row->get(instance, data);
}

ORV_ReturnStatus ListInOtherRoot(const ZelPlacedNode& node, const ZEL_ParamList& above, std::vector<std::string>& names)
{
    const bool answers = node.row->inEveryRoot || HasCapturedKernel();
    const ORV_ReturnStatus own = answers ? node.row->list(above, names) : ORV_OK;
    const ORV_ReturnStatus stated = ListStatedInstances(node.definition, above, names);
    return own != ORV_OK ? own : stated;
}

ORV_ReturnStatus GetNode(const ZelPlacedNode* node, const ZEL_ParamList& instance, std::string& data)
{
    if (node == nullptr) {
        return ORV_NOT_FOUND;
    }
    if (node->row->get == nullptr) {
        return ORV_NOT_SUPPORTED;
    }
    if (!HasKinds(instance, node->instanceKinds)) {
        return ORV_BAD_PARAM;
    }
    return IsRealHost() ? node->row->get(instance, data) : GetInOtherRoot(*node, instance, data);
}

ORV_ReturnStatus GetInto(ZEL_NodeID id, const ZEL_ParamList& instance, void* buffer, std::size_t size)
{
    const ZelPlacedNode* node = FindZelNode(id);
    std::string data;
    const ORV_ReturnStatus status = GetNode(node, instance, data);
    return status == ORV_OK ? CopyOut(data, node->definition.outputType->kind, buffer, size) : status;
}

ORV_ReturnStatus SetNode(const ZelPlacedNode* node, const ZEL_ParamList& instance, const ZEL_ParamList& input)
{
    if (node == nullptr) {
        return ORV_NOT_FOUND;
    }
    if (node->row->set == nullptr) {
        return ORV_READ_ONLY;
    }
    if (!HasKinds(instance, node->instanceKinds) || !HasKinds(input, InputKinds(*node->definition.inputType))) {
        return ORV_BAD_PARAM;
    }
    return node->row->inEveryRoot || IsRealHost() ? node->row->set(instance, input) : ORV_NOT_SUPPORTED;
}

ORV_ReturnStatus ListNode(const ZelPlacedNode& node, const ZEL_ParamList& above, std::vector<std::string>& names)
{
    const std::vector<ZEL_DataKind> kinds(node.instanceKinds.begin(), node.instanceKinds.end() - 1);
    if (!HasKinds(above, kinds)) {
        return ORV_BAD_PARAM;
    }
    return IsRealHost() ? node.row->list(above, names) : ListInOtherRoot(node, above, names);
}

void Sort(std::vector<std::string>& names, ZEL_DataKind kind)
{
    const auto isBefore = [kind](const std::string& a, const std::string& b) {
        const bool byLength = kind == ZEL_DATA_UINT64 && a.size() != b.size();  // decimal, without leading zeros
        return byLength ? a.size() < b.size() : a < b;
    };
    std::sort(names.begin(), names.end(), isBefore);
    names.erase(std::unique(names.begin(), names.end()), names.end());
}

ORV_ReturnStatus ListInto(const ZelPlacedNode* node, const ZEL_ParamList& above, std::vector<std::string>& names)
{
    if (node == nullptr) {
        return ORV_NOT_FOUND;
    }
    if (node->row->list == nullptr) {
        return ORV_BAD_PARAM;
    }
    std::vector<std::string> found;
    const ORV_ReturnStatus status = ListNode(*node, above, found);
    if (status == ORV_OK) {
        Sort(found, node->definition.instanceKind);
        names = std::move(found);
    }
    return status;
}
}  // namespace

const char* ORV_ReturnStatusToString(ORV_ReturnStatus status)
{
    switch (status) {
        case ORV_OK:
            return "Success";
        case ORV_FAILURE:
            return "Failure";
        case ORV_NOT_FOUND:
            return "Not found";
        case ORV_BAD_PARAM:
            return "Bad parameter";
        case ORV_NO_MEMORY:
            return "Out of memory";
        case ORV_NOT_SUPPORTED:
            return "Not supported";
        case ORV_READ_ONLY:
            return "Read only";
        case ORV_LIMIT_EXCEEDED:
            return "Limit exceeded";
        default:
            return "Unknown status";
    }
}

ORV_ReturnStatus ZEL_CheckSig(const char* md5, int version)
{
    if (md5 == nullptr) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] {
        const bool same = std::strcmp(md5, ZEL_DefsMD5Sum) == 0 && version == KernelInterfaceVersion();
        return same ? ORV_OK : ORV_FAILURE;
    });
}

ORV_ReturnStatus ZEL_LookupOutputTypeOfGet(ZEL_NodeID node, const ZEL_Type** type)
{
    if (type == nullptr) {
        return ORV_BAD_PARAM;
    }
    const ZelPlacedNode* found = FindZelNode(node);
    if (found == nullptr) {
        return ORV_NOT_FOUND;
    }
    *type = found->definition.outputType;
    return *type != nullptr ? ORV_OK : ORV_NOT_SUPPORTED;
}

// The types of this host stand in its node table.
void ZEL_ReleaseType(const ZEL_Type*) {}

ORV_ReturnStatus ZEL_Get(ZEL_NodeID node, const ZEL_ParamList* instance, void* buffer, std::size_t size)
{
    if (buffer == nullptr || size == 0) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return GetInto(node, OrEmpty(instance), buffer, size); });
}

ORV_ReturnStatus ZEL_GetData(ZEL_NodeID node, const ZEL_ParamList* instance, std::string& data)
{
    return Guarded([&] {
        std::string read;
        const ORV_ReturnStatus status = GetNode(FindZelNode(node), OrEmpty(instance), read);
        if (status == ORV_OK) {
            data = std::move(read);
        }
        return status;
    });
}

ORV_ReturnStatus ZEL_ListInstances(ZEL_NodeID branch, const ZEL_ParamList* instance, std::vector<std::string>& names)
{
    return Guarded([&] { return ListInto(FindZelNode(branch), OrEmpty(instance), names); });
}

ORV_ReturnStatus ZEL_Set(ZEL_NodeID node, const ZEL_ParamList* instance, const ZEL_ParamList* input, void* output,
                         void* outputSize)
{
    if (output != nullptr || outputSize != nullptr) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return SetNode(FindZelNode(node), OrEmpty(instance), OrEmpty(input)); });
}
