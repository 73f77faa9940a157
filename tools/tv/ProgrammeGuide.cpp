#include "ProgrammeGuide.h"

#include <cstdlib>
#include <cstring>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/eit.h>
#include <dvbpsi/dr_4d.h>
#include <dvbpsi/dr_50.h>
#include <dvbpsi/dr_55.h>
}

#include "DvbText.h"
#include "DvbTime.h"
#include "SectionBuilder.h"
#include "SectionLoops.h"

namespace {

const uint8_t PRESENT_FOLLOWING_ACTUAL = 0x4E;
const uint8_t SHORT_EVENT_TAG = 0x4D;
const uint8_t COMPONENT_TAG = 0x50;
const uint8_t PARENTAL_RATING_TAG = 0x55;
const uint8_t MIN_RATING = 0x01, MAX_RATING = 0x0F;  // the minimum ages 4 to 18
const uint8_t AGE_OF_RATING_0 = 3;

std::string text(const uint8_t* bytes, size_t length)
{
    return std::string(reinterpret_cast<const char*>(bytes), length);
}

// The section as libdvbpsi's packet reader hands it to a decoder, or null.
dvbpsi_psi_section_t* psiSection(const Bytes& bytes)
{
    dvbpsi_psi_section_t* section = dvbpsi_NewPSISection(int(bytes.size()));
    if (!section)
        return nullptr;
    std::memcpy(section->p_data, bytes.data(), bytes.size());
    section->i_table_id = bytes[0];
    section->b_syntax_indicator = bytes[1] & 0x80;
    section->b_private_indicator = bytes[1] & 0x40;
    section->i_length = uint16_t(bytes.size() - 3);
    section->i_extension = uint16_t(bytes[3] << 8 | bytes[4]);
    section->i_version = bytes[5] >> 1 & 0x1F;
    section->b_current_next = bytes[5] & 0x01;
    section->i_number = bytes[6];
    section->i_last_number = bytes[7];
    section->p_payload_start = section->p_data + 8;
    section->p_payload_end = section->p_data + bytes.size() - 4;  // before the CRC
    const uint8_t* crc = section->p_payload_end;
    section->i_crc = uint32_t(crc[0]) << 24 | uint32_t(crc[1]) << 16 | uint32_t(crc[2]) << 8 | crc[3];
    return section;
}

// The decoder reads the text's length behind the name without asking whether the name fits.
bool shortEventFits(const dvbpsi_descriptor_t& d)
{
    const size_t nameEnd = 4 + size_t(d.i_length >= 4 ? d.p_data[3] : 0);
    return d.i_length >= 5 && nameEnd < d.i_length && nameEnd + 1 + d.p_data[nameEnd] <= d.i_length;
}

void takeShortEvent(dvbpsi_descriptor_t& d, Programme& programme)
{
    if (!programme.language.empty() || !shortEventFits(d))
        return;
    if (const dvbpsi_short_event_dr_t* event = dvbpsi_DecodeShortEventDr(&d)) {
        programme.language = letterCode(event->i_iso_639_code);
        programme.name = dvbTextToUtf8(text(event->i_event_name, size_t(event->i_event_name_length)));
        programme.description = dvbTextToUtf8(text(event->i_text, size_t(event->i_text_length)));
    }
}

void takeRatings(dvbpsi_descriptor_t& d, Programme& programme)
{
    if (const dvbpsi_parental_rating_dr_t* ratings = dvbpsi_DecodeParentalRatingDr(&d))
        for (int i = 0; i < ratings->i_ratings_number; ++i) {
            const dvbpsi_parental_rating_t& r = ratings->p_parental_rating[i];
            const uint8_t country[] = {uint8_t(r.i_country_code >> 16), uint8_t(r.i_country_code >> 8),
                                       uint8_t(r.i_country_code)};
            if (r.i_rating >= MIN_RATING && r.i_rating <= MAX_RATING)
                programme.ratings.push_back({letterCode(country), uint8_t(r.i_rating + AGE_OF_RATING_0)});
        }
}

// The decoder allocates the text on its own, and deleting the descriptor leaves it: it is
// taken and freed here.
void takeComponent(dvbpsi_descriptor_t& d, Programme& programme)
{
    if (dvbpsi_component_dr_t* component = dvbpsi_DecodeComponentDr(&d)) {
        programme.components.push_back(
            {component->i_stream_content, component->i_component_type, component->i_component_tag,
             letterCode(component->i_iso_639_code),
             component->i_text ? dvbTextToUtf8(text(component->i_text, size_t(component->i_text_length))) : ""});
        std::free(component->i_text);
        component->i_text = nullptr;
        component->i_text_length = 0;
    }
}

std::optional<Programme> programmeOf(const dvbpsi_eit_event_t& event)
{
    Programme programme;
    programme.eventId = event.i_event_id;
    if (!dvbTime::startTime(event.i_start_time, programme.startTime) ||
        !dvbTime::duration(event.i_duration, programme.duration))
        return std::nullopt;
    for (dvbpsi_descriptor_t* d = event.p_first_descriptor; d; d = d->p_next) {
        if (d->i_tag == SHORT_EVENT_TAG)
            takeShortEvent(*d, programme);
        else if (d->i_tag == PARENTAL_RATING_TAG)
            takeRatings(*d, programme);
        else if (d->i_tag == COMPONENT_TAG)
            takeComponent(*d, programme);
    }
    return programme;
}

}  // namespace

ProgrammeGuide::ProgrammeGuide(uint16_t service) : serviceId(service), handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE))
{
    dvbpsi_AttachDemux(handle, newSubtable, this);
}

ProgrammeGuide::~ProgrammeGuide()
{
    dvbpsi_DetachDemux(handle);
    dvbpsi_delete(handle);
}

// libdvbpsi (1.3) asks whether the table is whole before it adds the section that makes it
// so, and would take it only when a section comes again: a section that completes the
// version is handed over twice (the second time is passed over once the table is taken).
bool ProgrammeGuide::add(const Bytes& bytes)
{
    const std::optional<size_t> events = sectionLoops::eitEvents(bytes.data(), bytes.size());
    if (!events || bytes[0] != PRESENT_FOLLOWING_ACTUAL || (bytes[3] << 8 | bytes[4]) != serviceId ||
        !(bytes[5] & 0x01) ||  // a table to come, not the current one
        tesmo_test::crc32Mpeg(bytes.data(), bytes.size()) != 0)
        return false;
    const int version = bytes[5] >> 1 & 0x1F;
    if (version != building)
        eventsInSection.clear();
    building = version;
    eventsInSection[bytes[6]] = *events;
    bool whole = true;
    for (unsigned number = 0; number <= bytes[7]; ++number)
        whole = whole && eventsInSection.count(uint8_t(number));
    changed = false;
    handOver(bytes);
    if (whole && !changed)
        handOver(bytes);
    return changed;
}

void ProgrammeGuide::handOver(const Bytes& bytes)
{
    if (dvbpsi_psi_section_t* section = psiSection(bytes))
        dvbpsi_Demux(handle, section);
}

void ProgrammeGuide::newSubtable(dvbpsi_t* h, uint8_t tableId, uint16_t extension, void* self)
{
    auto* guide = static_cast<ProgrammeGuide*>(self);
    if (tableId == PRESENT_FOLLOWING_ACTUAL && extension == guide->serviceId)
        dvbpsi_eit_attach(h, tableId, extension, tableComplete, self);
}

void ProgrammeGuide::tableComplete(void* self, dvbpsi_eit_t* table)
{
    static_cast<ProgrammeGuide*>(self)->take(*table);
    dvbpsi_eit_delete(table);
}

// The events of section 0 come first: the first programme among them is on now, the first
// among the others is next.
void ProgrammeGuide::take(const dvbpsi_eit_t& table)
{
    PresentFollowing taken;
    taken.version = table.i_version;
    const size_t presentEvents = eventsInSection[0];
    size_t index = 0;
    for (const dvbpsi_eit_event_t* event = table.p_first_event; event; event = event->p_next, ++index) {
        std::optional<Programme>& slot = index < presentEvents ? taken.present : taken.following;
        if (!slot)
            slot = programmeOf(*event);
    }
    programmes = std::move(taken);
    changed = true;
}
