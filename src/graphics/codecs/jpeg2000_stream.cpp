#include "graphics/codecs/jpeg2000_stream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tkv {

namespace {

constexpr auto kFails = static_cast<OPJ_SIZE_T>(-1);

template <typename Memory>
OPJ_BOOL seek(OPJ_OFF_T position, void* data) {
    auto& memory = *static_cast<Memory*>(data);
    if (position < 0 || static_cast<std::size_t>(position) > memory.file.size()) return OPJ_FALSE;
    memory.position = static_cast<std::size_t>(position);
    return OPJ_TRUE;
}

OPJ_SIZE_T read(void* buffer, OPJ_SIZE_T length, void* data) {
    auto& source = *static_cast<Jpeg2000Source*>(data);
    const ByteView rest = source.file.subspan(source.position);
    if (rest.empty()) return kFails;
    const std::size_t count = std::min(length, rest.size());
    std::memcpy(buffer, rest.data(), count);
    source.position += count;
    return count;
}

OPJ_OFF_T skipRead(OPJ_OFF_T count, void* data) {
    auto& source = *static_cast<Jpeg2000Source*>(data);
    const auto rest = static_cast<OPJ_OFF_T>(source.file.size() - source.position);
    if (count < 0 || rest == 0) return -1;
    const OPJ_OFF_T skipped = std::min(count, rest);
    source.position += static_cast<std::size_t>(skipped);
    return skipped;
}

OPJ_SIZE_T write(void* buffer, OPJ_SIZE_T length, void* data) {
    std::uint8_t* target = static_cast<Jpeg2000Target*>(data)->advance(length);
    if (target == nullptr) return kFails;
    std::memcpy(target, buffer, length);
    return length;
}

OPJ_OFF_T skipWritten(OPJ_OFF_T count, void* data) {
    auto& target = *static_cast<Jpeg2000Target*>(data);
    return count >= 0 && target.advance(static_cast<std::size_t>(count)) != nullptr ? count : -1;
}

}  // namespace

std::uint8_t* Jpeg2000Target::advance(std::size_t count) {
    try {
        file.resize(std::max(file.size(), position + count));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    std::uint8_t* first = file.data() + position;
    position += count;
    return first;
}

Jpeg2000Stream readingStream(Jpeg2000Source& source) {
    Jpeg2000Stream stream(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE));
    if (!stream) return stream;
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), source.file.size());
    opj_stream_set_read_function(stream.get(), read);
    opj_stream_set_skip_function(stream.get(), skipRead);
    opj_stream_set_seek_function(stream.get(), seek<Jpeg2000Source>);
    return stream;
}

Jpeg2000Stream writingStream(Jpeg2000Target& target) {
    Jpeg2000Stream stream(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_FALSE));
    if (!stream) return stream;
    opj_stream_set_user_data(stream.get(), &target, nullptr);
    opj_stream_set_write_function(stream.get(), write);
    opj_stream_set_skip_function(stream.get(), skipWritten);
    opj_stream_set_seek_function(stream.get(), seek<Jpeg2000Target>);
    return stream;
}

}  // namespace tkv
