#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// MD5 (RFC 1321), here a fingerprint of definitions and no protection against anyone.
class ZelMd5
{
public:
    void Add(std::string_view text)
    {
        for (const char c : text) {
            AddByte(static_cast<std::uint8_t>(c));
        }
    }

    /// Ends the message. @return 32 lower-case hexadecimal digits.
    std::string Digest()
    {
        const std::uint64_t bits = length_ * 8;
        AddByte(0x80);
        while (length_ % 64 != 56) {
            AddByte(0);
        }
        for (unsigned i = 0; i < 8; ++i) {
            AddByte(static_cast<std::uint8_t>(bits >> (8 * i)));
        }
        return Hex();
    }

private:
    void AddByte(std::uint8_t byte)
    {
        const unsigned place = static_cast<unsigned>(length_++ % 64);
        block_[place / 4] |= static_cast<std::uint32_t>(byte) << (8 * (place % 4));
        if (place == 63) {
            MixBlock();
            block_.fill(0);
        }
    }

    void MixBlock()
    {
        static constexpr std::uint8_t SHIFTS[4][4] = {
            {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
        auto [a, b, c, d] = state_;
        for (unsigned i = 0; i < 64; ++i) {
            const auto [mixed, word] = Round(i, b, c, d);
            const std::uint32_t sum = a + mixed + SineConstant(i) + block_[word];
            a = d;
            d = c;
            c = b;
            b += std::rotl(sum, SHIFTS[i / 16][i % 4]);
        }
        state_ = {state_[0] + a, state_[1] + b, state_[2] + c, state_[3] + d};
    }

    struct RoundInput
    {
        std::uint32_t mixed;
        unsigned word;
    };

    static RoundInput Round(unsigned i, std::uint32_t b, std::uint32_t c, std::uint32_t d)
    {
        switch (i / 16) {
            case 0:
                return {(b & c) | (~b & d), i};
            case 1:
                return {(d & b) | (~d & c), (5 * i + 1) % 16};
            case 2:
                return {b ^ c ^ d, (3 * i + 5) % 16};
            default:
                return {c ^ (b | ~d), (7 * i) % 16};
        }
    }

    static std::uint32_t SineConstant(unsigned i)
    {
        return static_cast<std::uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
    }

    std::string Hex() const
    {
        std::string text;
        for (const std::uint32_t word : state_) {
            for (unsigned i = 0; i < 4; ++i) {
                const std::uint32_t byte = (word >> (8 * i)) & 0xff;
                text += "0123456789abcdef"[byte >> 4];
                text += "0123456789abcdef"[byte & 15];
            }
        }
        return text;
    }

    std::array<std::uint32_t, 4> state_{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    std::array<std::uint32_t, 16> block_{};
    std::uint64_t length_ = 0;
};
