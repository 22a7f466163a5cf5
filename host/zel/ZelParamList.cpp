#include "ZelParamList.h"

#include <new>
#include <utility>

namespace
{
// The value is made in its place: GCC 12 takes a moved variant for one that may be uninitialized.
template <typename Value>
ORV_ReturnStatus Add(ZEL_ParamList& list, Value value)
{
    if (list.values.size() >= list.capacity) {
        return ORV_LIMIT_EXCEEDED;
    }
    list.values.emplace_back(std::move(value));
    return ORV_OK;
}
}  // namespace

ZEL_ParamList* ZEL_ParamListCreate(int /* both kinds are alike here */, int capacity)
{
    if (capacity < 0) {
        return nullptr;
    }
    return new (std::nothrow) ZEL_ParamList{static_cast<std::size_t>(capacity), {}};
}

ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text)
{
    if (list == nullptr || text == nullptr) {
        return ORV_BAD_PARAM;
    }
    try {
        return Add(*list, std::string(text));
    } catch (...)  // nothing but memory can run out here
    {
        return ORV_NO_MEMORY;
    }
}

ORV_ReturnStatus ZEL_ParamListAddInt(ZEL_ParamList* list, std::int64_t number)
{
    if (list == nullptr) {
        return ORV_BAD_PARAM;
    }
    try {
        return Add(*list, number);
    } catch (...) {
        return ORV_NO_MEMORY;
    }
}

void ZEL_ParamListDestroy(ZEL_ParamList* list)
{
    delete list;
}
