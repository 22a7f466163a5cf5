#include <gmock/gmock.h>

#include <sys/wait.h>
#include <csignal>
#include <ctime>
#include <string>

#include "DaemonTest.h"
#include "ZEL.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

using ZelshDaemon = DaemonTest;

namespace
{
constexpr std::size_t HEADER = 24;

std::string UuidLine()
{
    return "/system/bootFsUUID: 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11\n";
}

/// The data behind all headers of a binary reply, each of which must be well-formed.
std::string DataOf(std::string reply, std::size_t& pieces)
{
    std::string data;
    for (pieces = 0; reply.size() >= HEADER; ++pieces) {
        const TestHeader header(reply);
        EXPECT_EQ(header.kind, 0U);
        data += reply.substr(HEADER, header.length);
        reply.erase(0, HEADER + header.length);
    }
    EXPECT_EQ(reply, "");
    return data;
}
}  // namespace

TEST_F(ZelshDaemon, AReplyOfTextModeIsTheOutputAndTheMarker)
{
    Host().WithKernel({});
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("get /system/bootFsUUID"), UuidLine() + "<EOM>");
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
    EXPECT_EQ(client.Ask("# nothing"), "<EOM>");
}

TEST_F(ZelshDaemon, AnErrorOfTextModeIsItsTextALineEndAndTheMarker)
{
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("CD"), "Command not found.\n<EOM>");
    EXPECT_EQ(client.Ask("get /none"), "get: /none: no such node\nError in command get: Not found\n<EOM>");
}

TEST_F(ZelshDaemon, OutputAndErrorsKeepTheirOrder)
{
    Host().WithKernel({});
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("get /system/bootFsUUID /system/sysAlert"),
              UuidLine() + "Error in command get: Not supported\n<EOM>");
}

TEST_F(ZelshDaemon, BinaryModeIsSwitchedOnWithoutAMarkerAndOffWithOne)
{
    Host().WithKernel({});
    const TestClient client(Port());
    client.Send("bin");
    DiagnosticsWith("ZELSHDaemon():binary mode activated\n");
    client.Send("get /system/bootFsUUID");
    const std::string reply = client.Receive(HEADER + UuidLine().size());
    EXPECT_EQ(reply.substr(HEADER), UuidLine());
    EXPECT_EQ(client.Ask("bin"), "<EOM>");
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
}

TEST_F(ZelshDaemon, AHeaderOfBinaryModeHasItsFieldsInTheirPlaces)
{
    const TestClient client(Port());
    client.Send("bin");
    DiagnosticsWith("binary mode activated");
    const auto before = static_cast<std::uint64_t>(std::time(nullptr));
    client.Send("pwd");
    const TestHeader header(client.Receive(HEADER + 2));
    EXPECT_EQ(header.kind, 0U);
    EXPECT_EQ(header.zero, 0U);
    EXPECT_EQ(header.length, 2U);
    EXPECT_EQ(header.zeros, 0U);
    EXPECT_GE(header.seconds, before);
    EXPECT_LE(header.seconds, static_cast<std::uint64_t>(std::time(nullptr)));
    EXPECT_LT(header.microseconds, 1000000U);
}

TEST_F(ZelshDaemon, AnErrorOfBinaryModeIsAHeaderAlone)
{
    const TestClient client(Port());
    client.Send("bin");
    DiagnosticsWith("binary mode activated");
    client.Send("CD");
    const TestHeader header(client.Receive(HEADER));
    EXPECT_EQ(header.kind, 1U);
    EXPECT_EQ(header.length, 0U);
    EXPECT_EQ(client.Ask("bin"), "<EOM>");  // nothing stood in between
}

TEST_F(ZelshDaemon, BinaryModeIsKeptFromOneConnectionToTheNext)
{
    {
        const TestClient client(Port());
        client.Send("bin");
        DiagnosticsWith("binary mode activated");
    }
    const TestClient client(Port());
    client.Send("pwd");
    EXPECT_EQ(client.Receive(HEADER + 2).substr(HEADER), "/\n");
}

TEST_F(ZelshDaemon, AReplyBeyondOnePieceIsCutIntoPieces)
{
    const std::string words(200000, 'w');
    Host().WithKernel({.bootCmdLine = words});
    const TestClient client(Port());
    client.Send("bin");
    DiagnosticsWith("binary mode activated");
    client.Send("get /system/bootCmdLine");
    client.EndRequests();
    std::size_t pieces = 0;
    EXPECT_EQ(DataOf(client.ReceiveToEnd(), pieces), "/system/bootCmdLine: " + words + "\n");
    EXPECT_EQ(pieces, 4U);
}

TEST_F(ZelshDaemon, TheRightSignatureYieldsTheMarkerAlone)
{
    const TestClient client(Port());
    EXPECT_EQ(client.Ask(std::string("md5chk ") + ZEL_DefsMD5Sum), "<EOM>");
    EXPECT_EQ(client.Ask(std::string("md5chk ") + ZEL_DefsMD5Sum + " and more"), "<EOM>");
}

TEST_F(ZelshDaemon, AWrongSignatureIsReportedWithBoth)
{
    const TestClient client(Port());
    for (const std::string signature : {"", "0123", "00000000000000000000000000000000"}) {
        EXPECT_EQ(client.Ask("md5chk " + signature), "Client md5 signature (" + signature +
                                                         ") does not match running kernel signature (" +
                                                         ZEL_DefsMD5Sum + ")\n\n<EOM>");
    }
    EXPECT_EQ(client.Ask("md5chk"), "Command not found.\n<EOM>");
}

TEST_F(ZelshDaemon, ARequestEndsAtANulByte)
{
    const TestClient client(Port());
    EXPECT_EQ(client.Ask(std::string("pwd\0CD", 6)), "/\n<EOM>");
    EXPECT_EQ(client.Ask(std::string("\0CD", 3)), "<EOM>");
}

TEST_F(ZelshDaemon, ALongRequestIsCutAtWhatOneReceiveReturns)
{
    const TestClient client(Port());
    // The first 4096 bytes are a comment; what is left, "pwd", is a request of its own.
    EXPECT_EQ(client.Ask("#" + std::string(4095, 'x') + "pwd"), "<EOM>");
    EXPECT_EQ(client.ReceiveReply(), "/\n<EOM>");
    EXPECT_EQ(client.Ask("pwd" + std::string(4093, ' ')), "/\n<EOM>");
}

TEST_F(ZelshDaemon, TheParsersErrorsReachTheClient)
{
    const TestClient client(Port());
    EXPECT_THAT(client.Ask("pwd \"x y"), StartsWith("Invalid argument: \"\"x y\": unterminated quotation.\n/\n<EOM>"));
}

TEST_F(ZelshDaemon, AnErrorTextIsCutAtItsBuffer)
{
    const TestClient client(Port());
    const std::string reply = client.Ask("get " + std::string(4092, 'x'));
    EXPECT_THAT(reply, StartsWith("get: " + std::string(4000, 'x')));
    EXPECT_THAT(reply, EndsWith("\nError in command get: Not found\n<EOM>"));
    EXPECT_EQ(reply.find('\n'), 4095U);
}

TEST_F(ZelshDaemon, NoReplyHoldsTheMarkerBeforeItsEnd)
{
    Host().WithKernel({.bootCmdLine = "a <EOM> b"});
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("get /system/bootCmdLine"), "/system/bootCmdLine: a \\x3cEOM> b\n<EOM>");
}

TEST_F(ZelshDaemon, AClientThatQuitsGetsItsMarkerAndTheNextOneIsServed)
{
    {
        const TestClient client(Port());
        client.Send("exit");
        EXPECT_EQ(client.ReceiveToEnd(), "<EOM>");
    }
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
}

TEST_F(ZelshDaemon, AClientThatQuitsGetsTheWholeErrorTextBeforeItsMarker)
{
    const TestClient client(Port());
    client.Send("exit \"x");
    EXPECT_EQ(client.ReceiveToEnd(), "Invalid argument: \"\"x\": unterminated quotation.\n<EOM>");
}

TEST_F(ZelshDaemon, TheDiagnosticsOfARequestStandInTheirOrder)
{
    {
        const TestClient client(Port());
        client.Ask("pwd");
        client.Ask("CD");
    }
    const std::string log = DiagnosticsWith("Client closed connection.\n");
    EXPECT_THAT(log, StartsWith("ZELSHDaemon():ZELSH Daemon started\n"
                                "ZELSHDaemon():Waiting for client connection\n"
                                "ZELSHDaemon():Established connection with client 127.0.0.1\n"
                                "ZELSHDaemon():Waiting for client request\n"
                                "ZELSHDaemon():got \"pwd\"\n"
                                "ZELSHSendData():Sending 2 bytes of data in text mode\n"
                                "ZELSHDaemon():Sending <EOM>\n"
                                "ZELSHDaemon():Waiting for client request\n"
                                "ZELSHDaemon():got \"CD\"\n"
                                "ZELSHSendError():Sending text error\n"
                                "ZELSHSendData():Sending 1 bytes of data in text mode\n"
                                "ZELSHDaemon():Sending <EOM>\n"
                                "ZELSHDaemon():Waiting for client request\n"
                                "ZELSHDaemon():recv: read 0 bytes\n"
                                "ZELSHDaemon():Client closed connection.\n"));
}

TEST_F(ZelshDaemon, TheDiagnosticsOfBinaryModeNameEachPiece)
{
    const TestClient client(Port());
    client.Send("bin");
    DiagnosticsWith("binary mode activated");
    client.Send("pwd");
    client.Receive(HEADER + 2);
    client.Send("CD");
    client.Receive(HEADER);
    EXPECT_EQ(client.Ask("bin"), "<EOM>");
    EXPECT_THAT(DiagnosticsWith("deactivated"), HasSubstr("ZELSHDaemon():got \"pwd\"\n"
                                                          "ZELSHSendData():sending binary header\n"
                                                          "ZELSHSendData():sending 2 bytes of data in binary mode\n"
                                                          "ZELSHDaemon():Waiting for client request\n"
                                                          "ZELSHDaemon():got \"CD\"\n"
                                                          "ZELSHSendError():Sending binary error\n"
                                                          "ZELSHDaemon():Waiting for client request\n"));
}

TEST_F(ZelshDaemon, AConnectionThatFailsSaysWhy)
{
    TestClient client(Port());
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
    client.Reset();
    EXPECT_THAT(DiagnosticsWith("Client closed connection.\n"),
                HasSubstr("ZELSHDaemon():recv: Connection reset by peer\n"));
}

TEST_F(ZelshDaemon, AtLevelZeroRequestsLeaveNoTrace)
{
    const TestClient client(Port());
    client.Ask("loglevel 0");
    const std::string before = Diagnostics();
    client.Ask("pwd");
    client.Ask("CD");
    EXPECT_EQ(Diagnostics(), before);
}

TEST_F(ZelshDaemon, ItStopsCleanlyWhileItWaitsForAClient)
{
    EXPECT_EQ(Stop(SIGTERM), 0);
}

TEST_F(ZelshDaemon, ItStopsCleanlyWhileAClientIsConnected)
{
    const TestClient client(Port());
    client.Ask("pwd");
    EXPECT_EQ(Stop(SIGTERM), 0);
    EXPECT_EQ(client.ReceiveToEnd(), "");
}

TEST_F(ZelshDaemon, ADaemonWhoseClientDoesNotReadCanStillBeStopped)
{
    Host().WithKernel({.bootCmdLine = std::string(1 << 20, 'w')});
    std::string request = "get";
    for (int i = 0; i < 32; ++i) {
        request += " /system/bootCmdLine";
    }
    const TestClient client(Port());
    client.Send(request);
    EXPECT_EQ(client.Receive(1).size(), 1U);  // from now on it sends, and nobody reads
    EXPECT_EQ(Stop(SIGTERM), 0);
}

TEST_F(ZelshDaemon, ADaemonThatCannotListenSaysSoAndExitsWithOne)
{
    EXPECT_EQ(StatusOfSecond(0, "/second"), 1);
    EXPECT_EQ(Host().ReadFile("/second"),
              "ZELSHDaemon():ZELSH Daemon started\nZELSHDaemon():bind: Address already in use\n");
}

TEST_F(ZelshDaemon, BelowLevelZeroItStartsAndFailsInSilence)
{
    EXPECT_EQ(StatusOfSecond(-1, "/second"), 1);
    EXPECT_TRUE(Host().Exists("/second"));
    EXPECT_EQ(Host().ReadFile("/second"), "");
}

TEST_F(ZelshDaemon, ASecondDaemonOnThePortSaysSoAndExitsWithOne)
{
    const TestClient client(Port());
    const std::string program = std::string(BINARY_DIR) + "/apps/zelsh";
    const std::string place = "127.0.0.1:" + std::to_string(Port());
    const std::string command = program + " --daemon --listen " + place + " 2>'" + Host().Real("/second") + "'";
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(Host().ReadFile("/second"), "zelsh: bind: " + place + ": Address already in use\n");
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
}
