#include "Animation/Animation.h"

#include "Core/Communicate.h"

#include <type_traits>

namespace vel {

namespace {

constexpr int VERSION_STRAY_BYTES = 20230528; // wrote 4 bytes too many per key
constexpr long long KEY_BYTES = 24 + 72 + 8 + 8 + 4 + 4; // a key without view parameters

template <class T>
void put(std::ostream& out, T const& value)
{
    static_assert(std::is_trivially_copyable<T>::value, "raw copies only");
    out.write(reinterpret_cast<char const*>(&value), sizeof(T));
}

template <class T>
bool get(std::istream& in, T& value)
{
    return bool(in.read(reinterpret_cast<char*>(&value), sizeof(T)));
}

long long bytesLeft(std::istream& in)
{
    std::streampos at = in.tellg();
    if (at < 0)
        return 0;
    in.seekg(0, std::ios::end);
    std::streampos end = in.tellg();
    in.seekg(at);
    return (long long)(end - at);
}

bool damaged(char const* why)
{
    LogInfo(QString("Animation block damaged: %1; the keyframes were not loaded.").arg(why), 1);
    return false;
}

} // namespace

void Animation::Save(std::ostream* out) const
{
    if (!out)
        return;
    put(*out, current);
    put(*out, time);
    put(*out, playing);
    put(*out, loop);
    put(*out, int(keyframes.size()));
    for (Keyframe const& k : keyframes) {
        put(*out, k.position);
        put(*out, k.rotation);
        put(*out, k.distance);
        put(*out, k.time);
        put(*out, k.transition);
        put(*out, int(k.viewParameters.size()));
        for (Vector4<float> const& p : k.viewParameters)
            put(*out, p);
    }
}

bool Animation::Load(std::istream* in, bool append, int version)
{
    if (!in)
        return true;
    int fileCurrent = -1, count = 0;
    double fileTime = 0;
    bool filePlaying = false, fileLoop = false;
    if (!get(*in, fileCurrent) || !get(*in, fileTime) || !get(*in, filePlaying) || !get(*in, fileLoop) ||
        !get(*in, count))
        return damaged("it is truncated");
    long long keyBytes = KEY_BYTES + (version == VERSION_STRAY_BYTES ? 4 : 0);
    if (count < 0 || count > bytesLeft(*in) / keyBytes)
        return damaged("the key count does not fit");
    std::deque<Keyframe> keys(static_cast<std::size_t>(count));
    for (Keyframe& k : keys) {
        int stray = 0, n = 0;
        if ((version == VERSION_STRAY_BYTES && !get(*in, stray)) || !get(*in, k.position) ||
            !get(*in, k.rotation) || !get(*in, k.distance) || !get(*in, k.time) || !get(*in, k.transition) ||
            !get(*in, n))
            return damaged("it is truncated");
        if (n < 0 || n > bytesLeft(*in) / 16)
            return damaged("a view parameter count does not fit");
        k.viewParameters.resize(std::size_t(n));
        for (Vector4<float>& p : k.viewParameters)
            if (!get(*in, p))
                return damaged("it is truncated");
    }
    if (!append) {
        keyframes = std::move(keys);
        current = fileCurrent >= 0 && fileCurrent < int(keyframes.size()) ? fileCurrent : -1;
        time = fileTime;
        playing = filePlaying;
        loop = fileLoop;
        return true;
    }
    for (Keyframe& k : keys)
        keyframes.push_back(std::move(k));
    return true;
}

void Animation::clear()
{
    keyframes.clear();
    current = -1;
    time = 0;
    playing = false;
}

} // namespace vel
