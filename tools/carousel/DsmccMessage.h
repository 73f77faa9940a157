#ifndef TESMO_HBBTV_CAROUSEL_DSMCCMESSAGE_H
#define TESMO_HBBTV_CAROUSEL_DSMCCMESSAGE_H

// The three DSM-CC download messages of an object carousel, read from their sections
// (table_id 0x3B: DownloadServerInitiate and DownloadInfoIndication; 0x3C:
// DownloadDataBlock).

#include <cstdint>
#include <string>
#include <vector>

#include "BiopObject.h"

namespace carousel {

const uint8_t TABLE_MESSAGES = 0x3B;  // DownloadServerInitiate, DownloadInfoIndication
const uint8_t TABLE_DATA = 0x3C;  // DownloadDataBlock
const uint8_t PROTOCOL_DSMCC = 0x11;
const uint16_t SERVER_INITIATE_ID = 0x1006;
const uint16_t INFO_INDICATION_ID = 0x1002;
const uint16_t DATA_BLOCK_ID = 0x1003;
const uint8_t COMPRESSED_MODULE_DESCRIPTOR = 0x09;

struct ModuleInfo {
    uint16_t id = 0;
    uint32_t size = 0;  // as carried, compressed or not
    uint8_t version = 0;
    bool compressed = false;  // a compressed_module_descriptor (0x09) in its user info
    uint32_t originalSize = 0;  // from that descriptor
};

struct DsmccMessage {
    enum Kind { NONE, SERVER_INITIATE, INFO_INDICATION, DATA_BLOCK };
    Kind kind = NONE;

    // SERVER_INITIATE: where the service gateway is.
    ObjectRef gateway;

    // INFO_INDICATION
    uint32_t transactionId = 0;
    uint16_t blockSize = 0;
    std::vector<ModuleInfo> modules;

    // DATA_BLOCK
    uint16_t moduleId = 0;
    uint8_t moduleVersion = 0;
    uint16_t blockNumber = 0;
    std::string blockData;
};

// Reads one section, CRC included. False with a reason for a section that is not one of the
// three messages, or whose lengths or CRC do not hold.
bool parseDsmccSection(const uint8_t* section, size_t size, DsmccMessage& message, std::string& error);

}  // namespace carousel

#endif
