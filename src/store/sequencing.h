#pragma once

#include <QtGlobal>

#include <functional>

// A uniform draw from 0 … n-1 (n > 0) out of random 64-bit words, without
// modulo bias: the word times n, high half taken, drawn again while the low
// half falls below 2^64 mod n.
quint64 uniformBelow(quint64 n, const std::function<quint64()>& randomWord);
