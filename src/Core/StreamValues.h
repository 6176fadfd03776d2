// Raw little-endian values on standard streams, as the scene file's blocks hold them: a
// value by memory copy, a bool as one byte, a string as an int length and its bytes.
// Reading never trusts a length: a string longer than its limit is a failed read.
#pragma once

#include <istream>
#include <ostream>
#include <string>

namespace vel {

template <class T>
void PutValue(std::ostream& out, T const& value)
{
    out.write(reinterpret_cast<char const*>(&value), sizeof(T));
}

inline void PutString(std::ostream& out, std::string const& s)
{
    PutValue(out, int(s.size()));
    out.write(s.data(), std::streamsize(s.size()));
}

template <class T>
bool GetValue(std::istream& in, T& value)
{
    in.read(reinterpret_cast<char*>(&value), sizeof(T));
    return bool(in);
}

// Any non-zero byte is true.
inline bool GetValue(std::istream& in, bool& value)
{
    char c = 0;
    in.read(&c, 1);
    value = c != 0;
    return bool(in);
}

inline bool GetString(std::istream& in, std::string& s, int limit)
{
    int n = 0;
    if (!GetValue(in, n) || n < 0 || n > limit)
        return false;
    s.assign(size_t(n), '\0');
    in.read(s.data(), n);
    return bool(in);
}

} // namespace vel
