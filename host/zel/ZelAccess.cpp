#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "CSLogger.h"
#include "ZelKernelFacts.h"
#include "ZelNodes.h"
#include "ZelParamList.h"

namespace
{
/// Runs what may throw; the callers of this interface know statuses only.
template <typename Call>
ORV_ReturnStatus Guarded(Call call) noexcept
{
    try {
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

bool HasKinds(const ZEL_ParamList& list, const std::vector<ZEL_DataKind>& kinds)
{
    const auto isOfKind = [](const ZEL_ParamList::Value& value, ZEL_DataKind kind) {
        return std::holds_alternative<std::string>(value) == (kind == ZEL_DATA_TEXT);
    };
    return std::equal(list.values.begin(), list.values.end(), kinds.begin(), kinds.end(), isOfKind);
}

std::vector<ZEL_DataKind> InputKinds(const ZEL_Type& type)
{
    if (type.memberCount == 0) {
        return {type.kind};
    }
    std::vector<ZEL_DataKind> kinds;
    for (std::size_t i = 0; i < type.memberCount; ++i) {
        kinds.push_back(type.members[i].kind);
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

ORV_ReturnStatus GetNode(ZEL_NodeID id, const ZEL_ParamList& instance, void* buffer, std::size_t size)
{
    const ZelNode* node = FindZelNode(id);
    if (node == nullptr) {
        return ORV_NOT_FOUND;
    }
    if (node->get == nullptr) {
        return ORV_NOT_SUPPORTED;
    }
    if (!HasKinds(instance, InstanceKinds(node->definition))) {
        return ORV_BAD_PARAM;
    }
    std::string data;
    const ORV_ReturnStatus status = node->get(instance, data);
    return status == ORV_OK ? CopyOut(data, node->definition.output->kind, buffer, size) : status;
}

ORV_ReturnStatus SetNode(ZEL_NodeID id, const ZEL_ParamList& instance, const ZEL_ParamList& input)
{
    const ZelNode* node = FindZelNode(id);
    if (node == nullptr) {
        return ORV_NOT_FOUND;
    }
    if (node->set == nullptr) {
        return ORV_READ_ONLY;
    }
    if (!HasKinds(instance, InstanceKinds(node->definition)) || !HasKinds(input, InputKinds(*node->definition.input))) {
        return ORV_BAD_PARAM;
    }
    return node->set(instance, input);
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
    const ZelNode* row = FindZelNode(node);
    if (row == nullptr) {
        return ORV_NOT_FOUND;
    }
    *type = row->definition.output;
    return *type != nullptr ? ORV_OK : ORV_NOT_SUPPORTED;
}

// The types of this host stand in its node table.
void ZEL_ReleaseType(const ZEL_Type*) {}

ORV_ReturnStatus ZEL_Get(ZEL_NodeID node, const ZEL_ParamList* instance, void* buffer, std::size_t size)
{
    if (buffer == nullptr || size == 0) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return GetNode(node, OrEmpty(instance), buffer, size); });
}

ORV_ReturnStatus ZEL_Set(ZEL_NodeID node, const ZEL_ParamList* instance, const ZEL_ParamList* input, void* output,
                         void* outputSize)
{
    if (output != nullptr || outputSize != nullptr) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return SetNode(node, OrEmpty(instance), OrEmpty(input)); });
}
