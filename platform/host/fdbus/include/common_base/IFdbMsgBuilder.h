#pragma once

#include <common_base/fdb_types.h>

#include <string>

/// Something that can be written as the payload of a message.
class FDB_API IFdbMsgBuilder {
public:
    virtual ~IFdbMsgBuilder();
    /// Prepares the payload; returns its size in bytes, negative on failure. Called before the others.
    virtual int32_t build() = 0;
    /// The size that build() found.
    virtual int32_t bufferSize() = 0;
    /// The whole payload, valid until the builder changes; null when there is none.
    virtual const uint8_t* buffer() = 0;
    /// Writes the payload into a buffer of at least bufferSize() bytes.
    virtual bool toBuffer(uint8_t* buffer, int32_t size) = 0;
    virtual bool toString(std::string& text) const = 0;
};

/// Something that can be read from the payload of a message.
class FDB_API IFdbMsgParser {
public:
    virtual ~IFdbMsgParser();
    /// False when the bytes are not such a message.
    virtual bool parse(const uint8_t* buffer, int32_t size) = 0;
};
