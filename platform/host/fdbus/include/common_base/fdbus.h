#pragma once

/// The client and server side of the bus; the protobuf wrappers are in <common_base/CFdbProtoMsgBuilder.h>.

#include <common_base/CBaseClient.h>
#include <common_base/CBaseServer.h>
#include <common_base/CFdbContext.h>
