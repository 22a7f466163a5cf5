#include "EarlierErrors.h"

#include <string>

#include "ConfigStoreDocument.h"
#include "HostUtil.h"
#include "JsonText.h"
#include "NimbConfigStore.h"
#include "StorePaths.h"
#include "SysAlert.h"

namespace NimbConfigStore
{
namespace
{
std::string FillIn(std::string text, const JsonValue& arguments)
{
    std::size_t from = 0;
    for (const JsonValue& value : arguments.GetArray()) {
        const std::string argument = JsonText(value);
        const std::size_t place = text.find("%s", from);
        text.replace(place, 2, argument);  // throws std::out_of_range when there is no place left
        from = place + argument.size();    // a "%s" of the argument is text
    }
    return text;
}

std::string AlertText(const JsonValue& error)
{
    std::string text = JsonText(error["zubMsg"]);
    const auto arguments = error.FindMember("zubArgs");
    const bool hasArguments = arguments != error.MemberEnd() && arguments->value.IsArray();
    return hasArguments ? FillIn(std::move(text), arguments->value) : text;
}
}  // namespace

void RaiseEarlierErrors()
{
    if (!File_Exists(LOAD_STORE_ERRORS_FILE)) {
        return;
    }
    const auto file = CreateDocumentFromFile(LOAD_STORE_ERRORS_FILE);
    const JsonValue& root = *file->GetJsonValuePtr();
    if (!ConfigStoreDocument::ValueExists(root, "zubs") || !root["zubs"].IsArray()) {
        return;
    }
    for (const JsonValue& error : root["zubs"].GetArray()) {
        SetLSSysAlert(AlertText(error));
    }
}
}  // namespace NimbConfigStore
