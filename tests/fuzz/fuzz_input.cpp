// SPDX-License-Identifier: MIT
#include "fuzz/fuzz_input.h"

namespace orvanta::fuzz {

FuzzInput::FuzzInput(const QByteArray& input) : bytes(input.mid(2)) {
    if (input.size() >= 2) {
        choice = static_cast<std::uint16_t>(static_cast<std::uint8_t>(input[0]) << 8 |
                                            static_cast<std::uint8_t>(input[1]));
    }
}

std::vector<QByteArray> piecesOf(const QByteArray& bytes, std::uint16_t choice, qsizetype bound) {
    std::vector<QByteArray> pieces;
    std::uint32_t state = choice;
    for (qsizetype begin = 0; begin < bytes.size();) {
        // A linear congruential step; its upper bits are the better ones.
        state = state * 1664525u + 1013904223u;
        const auto length = static_cast<qsizetype>(state >> 16) % bound;
        pieces.push_back(bytes.mid(begin, length));
        begin += pieces.back().size();
    }
    return pieces;
}

QByteArray expanded(QByteArray bytes, qsizetype length) {
    return bytes.replace('\x1e', QByteArray(length, 'x'));
}

std::optional<QString> pickedText(const QByteArray& input, int index,
                                  std::initializer_list<const char*> texts) {
    const auto byte = index < input.size() ? static_cast<std::uint8_t>(input[index]) : 0u;
    const char* text = texts.begin()[byte % texts.size()];
    return text == nullptr ? std::nullopt : std::optional(QString::fromLatin1(text));
}

} // namespace orvanta::fuzz
