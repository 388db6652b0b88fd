// The virtual tables of the small interfaces live here, once for every program.

#include <common_base/CBaseJob.h>
#include <common_base/CBaseThread.h>
#include <common_base/IFdbMsgBuilder.h>

CBaseJob::~CBaseJob() = default;
void CBaseJob::run(CBaseWorker* /*worker*/, Ptr& /*ref*/) {}

CBaseThread::~CBaseThread() = default;

IFdbMsgBuilder::~IFdbMsgBuilder() = default;
IFdbMsgParser::~IFdbMsgParser() = default;
