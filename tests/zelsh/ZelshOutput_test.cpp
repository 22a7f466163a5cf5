#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "ShellTest.h"

namespace
{
constexpr ZEL_Type Plain(const char* name, ZEL_DataKind kind, std::size_t size)
{
    return {name, kind, size, nullptr, 0, nullptr, 0, nullptr};
}

constexpr ZEL_Enumerator STATES[] = {{0, "down"}, {1, "up"}};
constexpr ZEL_Type BOOL = Plain("bool", ZEL_DATA_BOOL, 1);
constexpr ZEL_Type INT8 = Plain("int8", ZEL_DATA_INT8, 1);
constexpr ZEL_Type UINT16 = Plain("uint16", ZEL_DATA_UINT16, 2);
constexpr ZEL_Type TEXT = Plain("text", ZEL_DATA_TEXT, 0);
constexpr ZEL_Type BYTES = Plain("bytes", ZEL_DATA_BYTES, 0);
constexpr ZEL_Type MAC = Plain("mac", ZEL_DATA_MAC, 6);
constexpr ZEL_Type UUID = Plain("uuid", ZEL_DATA_UUID, 16);
constexpr ZEL_Type IPV4 = Plain("ipv4", ZEL_DATA_IPV4, 4);
constexpr ZEL_Type IPV6 = Plain("ipv6", ZEL_DATA_IPV6, 16);
constexpr ZEL_Type STATE = {"state", ZEL_DATA_ENUM, 4, nullptr, 0, STATES, 2, nullptr};
constexpr ZEL_Type PORTS = {"ports", ZEL_DATA_ARRAY, 4, nullptr, 0, nullptr, 0, &UINT16};
constexpr ZEL_Type LETTERS = {"letters", ZEL_DATA_ARRAY, 4, nullptr, 0, nullptr, 0, &INT8};
constexpr ZEL_Type SMALL_BYTES = Plain("small", ZEL_DATA_UINT8, 1);
constexpr ZEL_Type OCTETS = {"octets", ZEL_DATA_ARRAY, 4, nullptr, 0, nullptr, 0, &SMALL_BYTES};

struct Inner
{
    std::uint16_t ports[2];
    char name[8];
};
constexpr ZEL_TypeMember INNER_MEMBERS[] = {
    {"ports", "", "", &PORTS, offsetof(Inner, ports), 4},
    {"name", "", "", &TEXT, offsetof(Inner, name), 8},
};
constexpr ZEL_Type INNER = {"inner", ZEL_DATA_STRUCT, sizeof(Inner), INNER_MEMBERS, 2, nullptr, 0, nullptr};

struct Outer
{
    Inner inner[2];
    std::int64_t balance;
};
constexpr ZEL_Type INNERS = {"inners", ZEL_DATA_ARRAY, 2 * sizeof(Inner), nullptr, 0, nullptr, 0, &INNER};
constexpr ZEL_Type INT64 = Plain("int64", ZEL_DATA_INT64, 8);
constexpr ZEL_TypeMember OUTER_MEMBERS[] = {
    {"inner", "", "", &INNERS, offsetof(Outer, inner), sizeof(Outer::inner)},
    {"balance", "", "bytes", &INT64, offsetof(Outer, balance), 8},
};
constexpr ZEL_Type OUTER = {"outer", ZEL_DATA_STRUCT, sizeof(Outer), OUTER_MEMBERS, 2, nullptr, 0, nullptr};

constexpr Outer SAMPLE = {{{{80, 443}, "web"}, {{0, 65535}, "a\nb"}}, -5};

std::string Printed(const ZEL_Type& type, const void* data, std::size_t size)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(ZELSHOutput_PrintData("x", &type, data, size), ORV_OK);
    return testing::internal::GetCapturedStdout();
}

std::string Printed(const ZEL_Type& type, const std::string& data)
{
    return Printed(type, data.data(), data.size());
}

std::string Printed(const ZEL_Type& type)
{
    return Printed(type, &SAMPLE, sizeof SAMPLE);
}

/// What Python makes of a literal, as repr() writes it.
std::string ReadByPython(const std::string& literal, const TestHost& host)
{
    const std::string file = host.Real("/literal");
    std::FILE* output = std::fopen(file.c_str(), "w");
    EXPECT_EQ(std::fwrite(literal.data(), 1, literal.size(), output), literal.size());
    std::fclose(output);
    const std::string command =
        "python3 -c 'import ast, sys; print(ascii(ast.literal_eval(open(sys.argv[1], "
        "encoding=\"utf-8\", newline=\"\").read())))' '" +
        file + "'";
    std::FILE* python = popen(command.c_str(), "r");
    std::string answer;
    char bytes[4096];
    for (std::size_t length; (length = std::fread(bytes, 1, sizeof bytes, python)) > 0;) {
        answer.append(bytes, length);
    }
    EXPECT_EQ(pclose(python), 0);
    return answer;
}
}  // namespace

using namespace std::string_literals;
using ZelshOutput = ShellTest;

TEST_F(ZelshOutput, EveryKindOfValueHasATextForm)
{
    EXPECT_EQ(Printed(BOOL, "\1"s), "x: true\n");
    EXPECT_EQ(Printed(INT8, "\xff"s), "x: -1\n");
    EXPECT_EQ(Printed(UINT16, "\xff\xff"s), "x: 65535\n");
    EXPECT_EQ(Printed(TEXT, "a b\0c"s), "x: a b\n");
    EXPECT_EQ(Printed(TEXT, ""s), "x: \"\"\n");
    EXPECT_EQ(Printed(BYTES, "\0\xab"s), "x: 00ab\n");
    EXPECT_EQ(Printed(MAC, "\0\x1b\x21\x3c\x9d\xf8"s), "x: 00:1b:21:3c:9d:f8\n");
    EXPECT_EQ(Printed(UUID, "0123456789abcdef"s), "x: 30313233-3435-3637-3839-616263646566\n");
    EXPECT_EQ(Printed(IPV4, "\xc0\0\2\1"s), "x: 192.0.2.1\n");
    EXPECT_EQ(Printed(IPV6, "\x20\1\x0d\xb8"s + std::string(11, '\0') + "\1"), "x: 2001:db8::1\n");
    EXPECT_EQ(Printed(STATE, "\1\0\0\0"s), "x: up\n");
    EXPECT_EQ(Printed(STATE, "\7\0\0\0"s), "x: 7\n");
    EXPECT_EQ(Printed(PORTS, "\1\0\2\0"s), "x: 1, 2\n");
    EXPECT_EQ(Printed(LETTERS, "abc\0"s), "x: abc\n");
}

TEST_F(ZelshOutput, AStructureIsAlignedForPeople)
{
    EXPECT_EQ(Printed(OUTER),
              "x:\n  inner[0].ports  80, 443\n  inner[0].name   web\n  inner[1].ports  0, 65535\n"
              "  inner[1].name   a\\x0ab\n  balance         -5 bytes\n");
}

TEST_F(ZelshOutput, AStructureIsALineAValueInTheRawFormat)
{
    options.output = zelshRawOutputPtr;
    EXPECT_EQ(Printed(OUTER),
              "x.inner[0].ports[0]=80\nx.inner[0].ports[1]=443\nx.inner[0].name=web\nx.inner[1].ports[0]=0\n"
              "x.inner[1].ports[1]=65535\nx.inner[1].name=a\\x0ab\nx.balance=-5\n");
    EXPECT_EQ(Printed(BYTES, ""s), "x=\n");
}

TEST_F(ZelshOutput, AStructureIsALiteralThatPythonReads)
{
    options.output = zelshPythonOutputPtr;
    EXPECT_EQ(ReadByPython(Printed(OUTER), Host()),
              "{'x': {'inner': [{'ports': [80, 443], 'name': 'web'}, {'ports': [0, 65535], 'name': 'a\\nb'}], "
              "'balance': -5}}\n");
}

TEST_F(ZelshOutput, PythonReadsBackEveryTextAsItIs)
{
    options.output = zelshPythonOutputPtr;
    std::string ascii;
    for (int byte = 1; byte < 128; ++byte) {
        ascii += static_cast<char>(byte);
    }
    EXPECT_EQ(ReadByPython(Printed(TEXT, ascii), Host()),
              "{'x': '\\x01\\x02\\x03\\x04\\x05\\x06\\x07\\x08\\t\\n\\x0b\\x0c\\r\\x0e\\x0f\\x10\\x11\\x12\\x13\\x14"
              "\\x15\\x16\\x17\\x18\\x19\\x1a\\x1b\\x1c\\x1d\\x1e\\x1f !\"#$%&\\'()*+,-./0123456789:;<=>?@"
              "ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\\x7f'}\n");
    EXPECT_EQ(ReadByPython(Printed(TEXT, "\xc2\x9b é <EOM>"s), Host()), "{'x': '\\x9b \\xe9 <EOM>'}\n");
    EXPECT_EQ(ReadByPython(Printed(TEXT, "\xff'"s), Host()), "{'x': b\"\\xff'\"}\n");
    EXPECT_EQ(ReadByPython(Printed(BOOL, "\0"s), Host()), "{'x': False}\n");
}

TEST_F(ZelshOutput, ABufferIsHexadecimalOrAByteString)
{
    const auto printed = [] {
        testing::internal::CaptureStdout();
        ZELSHOutput_PrintBuf("\0\x7f", 2);
        return testing::internal::GetCapturedStdout();
    };
    EXPECT_EQ(printed(), "007f\n");
    options.output = zelshPythonOutputPtr;
    EXPECT_EQ(printed(), "b'\\x00\\x7f'\n");
}

TEST_F(ZelshOutput, DataOfTheWrongSizeIsRefused)
{
    EXPECT_EQ(ZELSHOutput_PrintData("x", &OUTER, &SAMPLE, sizeof SAMPLE - 1), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHOutput_PrintData(nullptr, &OUTER, &SAMPLE, sizeof SAMPLE), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHOutput_PrintData("x", nullptr, &SAMPLE, sizeof SAMPLE), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHOutput_PrintData("x", &TEXT, nullptr, 1), ORV_BAD_PARAM);
}

TEST_F(ZelshOutput, AnArrayOfSignedBytesIsAText)
{
    EXPECT_EQ(ZELSHIsArrayStringType(&LETTERS), 1);
    EXPECT_EQ(ZELSHIsArrayStringType(&OCTETS), 0);
    EXPECT_EQ(ZELSHIsArrayStringType(&PORTS), 0);
    EXPECT_EQ(ZELSHIsArrayStringType(&TEXT), 0);
    EXPECT_EQ(ZELSHIsArrayStringType(nullptr), 0);
}
