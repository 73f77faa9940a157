#include "SectionBuilder.h"

namespace tesmo_test {

namespace {

void put16(Bytes& out, uint16_t value)
{
    out.push_back(uint8_t(value >> 8));
    out.push_back(uint8_t(value));
}

void put32(Bytes& out, uint32_t value)
{
    put16(out, uint16_t(value >> 16));
    put16(out, uint16_t(value));
}

void append(Bytes& out, const Bytes& more)
{
    for (uint8_t byte : more)
        out.push_back(byte);
}

void append(Bytes& out, const std::string& text)
{
    out.insert(out.end(), text.begin(), text.end());
}

// Adds section_length and the CRC to a section whose header leaves bytes 1-2 open.
Bytes finishSection(Bytes section)
{
    const size_t length = section.size() - 3 + 4;
    section[1] = uint8_t((section[1] & 0xF0) | ((length >> 8) & 0x0F));
    section[2] = uint8_t(length);
    put32(section, crc32Mpeg(section.data(), section.size()));
    return section;
}

}  // namespace

uint32_t crc32Mpeg(const uint8_t* data, size_t length)
{
    uint32_t crc = 0xFFFFFFFF;
    for (size_t i = 0; i < length; ++i) {
        crc ^= uint32_t(data[i]) << 24;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x80000000) ? (crc << 1) ^ 0x04C11DB7 : crc << 1;
    }
    return crc;
}

Bytes descriptor(uint8_t tag, const Bytes& body)
{
    Bytes out{tag, uint8_t(body.size())};
    append(out, body);
    return out;
}

Bytes applicationDescriptor(const ApplicationDescriptorFields& fields)
{
    Bytes body{uint8_t(fields.profiles.size() * 5)};
    for (const Profile& p : fields.profiles) {
        put16(body, p.profile);
        body.insert(body.end(), {p.major, p.minor, p.micro});
    }
    body.push_back(uint8_t((fields.serviceBound ? 0x80 : 0) | (fields.visibility & 3) << 5 | 0x1F));
    body.push_back(fields.priority);
    append(body, fields.labels);
    return descriptor(0x00, body);
}

Bytes nameDescriptor(const std::string& name, const std::string& language)
{
    Bytes body;
    append(body, language);
    body.push_back(uint8_t(name.size()));
    append(body, name);
    return descriptor(0x01, body);
}

Bytes httpTransport(uint8_t label, const std::string& urlBase)
{
    Bytes body;
    put16(body, 3);
    body.push_back(label);
    body.push_back(uint8_t(urlBase.size()));
    append(body, urlBase);
    body.push_back(0);  // URL_extension_count
    return descriptor(0x02, body);
}

Bytes carouselTransport(uint8_t label, uint8_t componentTag)
{
    Bytes body;
    put16(body, 1);
    body.insert(body.end(), {label, 0x7F, componentTag});
    return descriptor(0x02, body);
}

Bytes remoteCarouselTransport(uint8_t label, uint16_t onid, uint16_t tsid, uint16_t sid, uint8_t componentTag)
{
    Bytes body;
    put16(body, 1);
    body.insert(body.end(), {label, 0xFF});
    put16(body, onid);
    put16(body, tsid);
    put16(body, sid);
    body.push_back(componentTag);
    return descriptor(0x02, body);
}

Bytes locationDescriptor(const std::string& path)
{
    Bytes body;
    append(body, path);
    return descriptor(0x15, body);
}

Bytes usageDescriptor(uint8_t usageType)
{
    return descriptor(0x16, {usageType});
}

Bytes boundaryDescriptor(const std::vector<std::string>& extensions)
{
    Bytes body{uint8_t(extensions.size())};
    for (const std::string& e : extensions) {
        body.push_back(uint8_t(e.size()));
        append(body, e);
    }
    return descriptor(0x17, body);
}

Bytes recordingDescriptor(const Recording& recording)
{
    Bytes body{uint8_t(recording.flags | 0x03), uint8_t(recording.labels.size())};
    for (const std::string& label : recording.labels) {
        body.push_back(uint8_t(label.size()));
        append(body, label);
        body.push_back(0xC0);  // storage_properties
    }
    body.push_back(uint8_t(recording.componentTags.size()));
    append(body, recording.componentTags);
    body.push_back(0);  // private_length
    return descriptor(0x06, body);
}

App& App::with(const Bytes& descriptorBytes)
{
    append(descriptors, descriptorBytes);
    return *this;
}

Bytes App::bytes() const
{
    Bytes out;
    put32(out, organisationId);
    put16(out, applicationId);
    out.push_back(controlCode);
    put16(out, uint16_t(0xF000 | descriptors.size()));
    append(out, descriptors);
    return out;
}

AITSection& AITSection::common(const Bytes& descriptorBytes)
{
    append(commonDescriptors, descriptorBytes);
    return *this;
}

AITSection& AITSection::application(const App& app)
{
    append(applications, app.bytes());
    return *this;
}

Bytes AITSection::bytes() const
{
    Bytes out{0x74, 0xF0, 0x00};
    put16(out, 0x0010);  // test_application_flag 0, application_type HbbTV
    out.push_back(uint8_t(0xC1 | (versionNumber & 0x1F) << 1));
    out.push_back(sectionNumber);
    out.push_back(lastSectionNumber);
    put16(out, uint16_t(0xF000 | commonDescriptors.size()));
    append(out, commonDescriptors);
    put16(out, uint16_t(0xF000 | applications.size()));
    append(out, applications);
    return finishSection(out);
}

void setSectionLength(Bytes& bytes)
{
    const size_t length = bytes.size() - 3;
    bytes[1] = uint8_t((bytes[1] & 0xF0) | ((length >> 8) & 0x0F));
    bytes[2] = uint8_t(length);
}

Bytes pmtSection(uint16_t programNumber, const std::vector<Stream>& streams, const Bytes& programDescriptors,
                 uint16_t pcrPid)
{
    Bytes out{0x02, 0xB0, 0x00};
    put16(out, programNumber);
    out.insert(out.end(), {0xC1, 0x00, 0x00});
    put16(out, uint16_t(0xE000 | pcrPid));
    put16(out, uint16_t(0xF000 | programDescriptors.size()));
    append(out, programDescriptors);
    for (const Stream& s : streams) {
        out.push_back(s.streamType);
        put16(out, uint16_t(0xE000 | s.pid));
        put16(out, uint16_t(0xF000 | s.descriptors.size()));
        append(out, s.descriptors);
    }
    return finishSection(out);
}

bool isAudioOrVideo(uint8_t streamType)
{
    static const uint8_t types[] = {0x01, 0x02, 0x03, 0x04, 0x0F, 0x10, 0x11, 0x1B, 0x24};
    for (uint8_t type : types)
        if (type == streamType)
            return true;
    return false;
}

Bytes patSection(uint16_t transportStreamId, const std::vector<Program>& programs)
{
    Bytes out{0x00, 0xB0, 0x00};
    put16(out, transportStreamId);
    out.insert(out.end(), {0xC1, 0x00, 0x00});
    for (const Program& p : programs) {
        put16(out, p.number);
        put16(out, uint16_t(0xE000 | p.pmtPid));
    }
    return finishSection(out);
}

Bytes sdtSection(uint16_t transportStreamId, uint16_t originalNetworkId, const std::vector<SdtService>& services)
{
    Bytes out{0x42, 0xF0, 0x00};
    put16(out, transportStreamId);
    out.insert(out.end(), {0xC1, 0x00, 0x00});
    put16(out, originalNetworkId);
    out.push_back(0xFF);
    for (const SdtService& s : services) {
        Bytes body{0x01, uint8_t(s.provider.size())};  // digital television service
        append(body, s.provider);
        body.push_back(uint8_t(s.name.size()));
        append(body, s.name);
        const Bytes serviceDescriptor = descriptor(0x48, body);
        put16(out, s.serviceId);
        out.push_back(s.presentFollowing ? 0xFD : 0xFC);  // no EIT schedule
        put16(out, uint16_t(0x8000 | serviceDescriptor.size()));  // running, free
        append(out, serviceDescriptor);
    }
    return finishSection(out);
}

namespace {

const int64_t SECONDS_A_DAY = 86400;
const int64_t MJD_OF_1970 = 40587;

uint8_t bcd(unsigned value)
{
    return uint8_t((value / 10) << 4 | value % 10);
}

// Hours, minutes and seconds of a time of day or a duration.
void putBcdTime(Bytes& out, uint32_t seconds)
{
    for (unsigned part : {seconds / 3600, seconds / 60 % 60, seconds % 60})
        out.push_back(bcd(part));
}

// A loop of descriptors behind its 12-bit length.
void putLoop(Bytes& out, const Bytes& descriptors)
{
    put16(out, uint16_t(0xF000 | descriptors.size()));
    append(out, descriptors);
}

}  // namespace

Bytes dvbStartTime(int64_t seconds)
{
    const int64_t days = seconds >= 0 ? seconds / SECONDS_A_DAY : -((-seconds + SECONDS_A_DAY - 1) / SECONDS_A_DAY);
    Bytes out;
    put16(out, uint16_t(days + MJD_OF_1970));
    putBcdTime(out, uint32_t(seconds - days * SECONDS_A_DAY));
    return out;
}

Bytes dvbDuration(uint32_t seconds)
{
    Bytes out;
    putBcdTime(out, seconds);
    return out;
}

std::string dvbText(const std::string& utf8)
{
    for (unsigned char c : utf8)
        if (c < 0x20 || c > 0x7E)
            return "\x15" + utf8;
    return utf8;
}

Bytes shortEventDescriptor(const std::string& language, const std::string& name, const std::string& text)
{
    Bytes body;
    append(body, language);
    body.push_back(uint8_t(name.size()));
    append(body, name);
    body.push_back(uint8_t(text.size()));
    append(body, text);
    return descriptor(0x4D, body);
}

Bytes parentalRatingDescriptor(const std::vector<Rating>& ratings)
{
    Bytes body;
    for (const Rating& r : ratings) {
        append(body, r.country);
        body.push_back(r.rating);
    }
    return descriptor(0x55, body);
}

Bytes componentDescriptor(uint8_t streamContent, uint8_t componentType, uint8_t componentTag,
                          const std::string& language, const std::string& text)
{
    Bytes body{uint8_t(0xF0 | streamContent), componentType, componentTag};
    append(body, language);
    append(body, text);
    return descriptor(0x50, body);
}

Bytes networkNameDescriptor(const std::string& name)
{
    Bytes body;
    append(body, name);
    return descriptor(0x40, body);
}

Bytes subtitlingDescriptor(const std::string& language, uint8_t subtitlingType, uint16_t compositionPage,
                           uint16_t ancillaryPage)
{
    Bytes body;
    append(body, language);
    body.push_back(subtitlingType);
    put16(body, compositionPage);
    put16(body, ancillaryPage);
    return descriptor(0x59, body);
}

Bytes eitPresentFollowingSection(const EitService& service, uint8_t version, uint8_t sectionNumber,
                                 const std::vector<EitEvent>& events)
{
    Bytes out{0x4E, 0xF0, 0x00};
    put16(out, service.serviceId);
    out.insert(out.end(), {uint8_t(0xC1 | (version & 0x1F) << 1), sectionNumber, 0x01});
    put16(out, service.transportStreamId);
    put16(out, service.originalNetworkId);
    out.insert(out.end(), {0x01, 0x4E});  // segment_last_section_number, last_table_id
    for (const EitEvent& e : events) {
        put16(out, e.eventId);
        append(out, dvbStartTime(e.startTime));
        append(out, dvbDuration(e.duration));
        put16(out, uint16_t((e.runningStatus & 0x07) << 13 | e.descriptors.size()));  // free_CA_mode 0
        append(out, e.descriptors);
    }
    return finishSection(out);
}

Bytes nitSection(uint16_t networkId, uint8_t version, const Bytes& networkDescriptors,
                 const std::vector<NitTransportStream>& streams)
{
    Bytes out{0x40, 0xF0, 0x00};
    put16(out, networkId);
    out.insert(out.end(), {uint8_t(0xC1 | (version & 0x1F) << 1), 0x00, 0x00});
    putLoop(out, networkDescriptors);
    Bytes loop;
    for (const NitTransportStream& s : streams) {
        put16(loop, s.transportStreamId);
        put16(loop, s.originalNetworkId);
        putLoop(loop, {});
    }
    putLoop(out, loop);
    return finishSection(out);
}

Bytes concat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& p : parts)
        append(out, p);
    return out;
}

}  // namespace tesmo_test
