#include "DsmccMessage.h"

#include "SectionBuilder.h"

namespace carousel {

namespace {

const size_t SECTION_HEADER = 8;
const size_t CRC_SIZE = 4;

void readModuleInfo(ByteReader info, ModuleInfo& module)
{
    info.skip(12);  // module and block time-outs, minimum block time
    for (uint8_t taps = info.u8(); taps > 0 && info.good(); --taps) {
        info.skip(6);
        info.skip(info.u8());
    }
    ByteReader user = info.part(info.u8());
    while (user.left() >= 2) {
        const uint8_t tag = user.u8();
        ByteReader body = user.part(user.u8());
        if (tag == COMPRESSED_MODULE_DESCRIPTOR) {
            body.skip(1);  // compression method: zlib
            module.originalSize = body.u32();
            module.compressed = body.good();
        }
    }
}

bool readInfoIndication(ByteReader in, DsmccMessage& message)
{
    in.skip(4);  // download id
    message.blockSize = in.u16();
    in.skip(10);  // window, ack period, download window and scenario
    in.skip(in.u16());  // compatibility descriptor
    const uint16_t count = in.u16();
    for (uint16_t i = 0; i < count && in.good(); ++i) {
        ModuleInfo module;
        module.id = in.u16();
        module.size = in.u32();
        module.version = in.u8();
        readModuleInfo(in.part(in.u8()), module);
        message.modules.push_back(module);
    }
    message.kind = DsmccMessage::INFO_INDICATION;
    return in.good();
}

bool readServerInitiate(ByteReader in, DsmccMessage& message)
{
    in.skip(20);  // server id
    in.skip(in.u16());  // compatibility descriptor
    ByteReader gatewayInfo = in.part(in.u16());
    message.kind = DsmccMessage::SERVER_INITIATE;
    return readObjectRef(gatewayInfo, message.gateway);
}

bool readDataBlock(ByteReader in, DsmccMessage& message)
{
    message.moduleId = in.u16();
    message.moduleVersion = in.u8();
    in.skip(1);
    message.blockNumber = in.u16();
    message.blockData = in.text(in.left());
    message.kind = DsmccMessage::DATA_BLOCK;
    return in.good();
}

}  // namespace

bool parseDsmccSection(const uint8_t* section, size_t size, DsmccMessage& message, std::string& error)
{
    if (size < SECTION_HEADER + CRC_SIZE || (section[0] != TABLE_MESSAGES && section[0] != TABLE_DATA)) {
        error = "not a DSM-CC download section";
        return false;
    }
    const size_t length = size_t(section[1] & 0x0F) << 8 | section[2];
    if (3 + length != size || tesmo_test::crc32Mpeg(section, size) != 0) {
        error = "a DSM-CC section whose length or CRC does not hold";
        return false;
    }
    ByteReader in(section + SECTION_HEADER, size - SECTION_HEADER - CRC_SIZE);
    const uint8_t protocol = in.u8();
    in.skip(1);  // dsmcc type
    const uint16_t messageId = in.u16();
    message.transactionId = in.u32();
    in.skip(1);
    const uint8_t adaptationLength = in.u8();
    const uint16_t messageLength = in.u16();
    in.skip(adaptationLength);
    if (protocol != PROTOCOL_DSMCC || !in.good() || messageLength < adaptationLength) {
        error = "no DSM-CC message header";
        return false;
    }
    ByteReader payload = in.part(messageLength - adaptationLength);
    bool read = false;
    if (section[0] == TABLE_DATA && messageId == DATA_BLOCK_ID)
        read = readDataBlock(payload, message);
    else if (messageId == INFO_INDICATION_ID)
        read = readInfoIndication(payload, message);
    else if (messageId == SERVER_INITIATE_ID)
        read = readServerInitiate(payload, message);
    if (!read)
        error = "a DSM-CC message (id " + std::to_string(messageId) + ") whose lengths do not hold";
    return read;
}

}  // namespace carousel
