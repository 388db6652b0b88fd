#include <common_base/CFdbBaseObject.h>
#include <common_base/CFdbContext.h>

#include "Endpoint.h"

#include <host/Log.h>

#include <atomic>
#include <exception>

namespace fdb {
namespace {

template <typename Call>
void guarded(CFdbBaseObject* owner, const char* callback, Call call) {
    if (!owner) {
        return;
    }
    try {
        call();
    } catch (const std::exception& error) {
        lgklog_print(qvn::host::kLogError, "fdbus: %s of a client or server threw: %s", callback, error.what());
    } catch (...) {
        lgklog_print(qvn::host::kLogError, "fdbus: %s of a client or server threw", callback);
    }
}

}  // namespace

void Callbacks::online(CFdbBaseObject* owner, FdbSessionId_t session, bool first) {
    guarded(owner, "onOnline", [&] { owner->onOnline(session, first); });
}

void Callbacks::offline(CFdbBaseObject* owner, FdbSessionId_t session, bool last) {
    guarded(owner, "onOffline", [&] { owner->onOffline(session, last); });
}

void Callbacks::broadcast(CFdbBaseObject* owner, CBaseJob::Ptr& job) {
    guarded(owner, "onBroadcast", [&] { owner->onBroadcast(job); });
}

void Callbacks::reply(CFdbBaseObject* owner, CBaseJob::Ptr& job) {
    guarded(owner, "onReply", [&] { owner->onReply(job); });
}

void Callbacks::status(CFdbBaseObject* owner, CBaseJob::Ptr& job, int32_t error, const char* text) {
    guarded(owner, "onStatus", [&] { owner->onStatus(job, error, text); });
}

void Callbacks::invoke(CFdbBaseObject* owner, CBaseJob::Ptr& job) {
    guarded(owner, "onInvoke", [&] { owner->onInvoke(job); });
}

void Callbacks::subscribe(CFdbBaseObject* owner, CBaseJob::Ptr& job) {
    guarded(owner, "onSubscribe", [&] { owner->onSubscribe(job); });
}

std::shared_ptr<qvn::host::EventLoop> loopOf(CBaseWorker* worker) {
    return (worker ? worker : FDB_CONTEXT)->loop();
}

bool contextRuns() {
    return FDB_CONTEXT->loop()->running();
}

bool contextRunsFor(const std::string& service) {
    if (!contextRuns()) {
        lgklog_print(qvn::host::kLogFatal, "fdbus: service '%s' needs the context: call FDB_CONTEXT->start() before",
                     service.c_str());
        return false;
    }
    return true;
}

FdbSessionId_t nextSessionId() {
    static std::atomic<FdbSessionId_t> next(1);
    return next++;
}

}  // namespace fdb

CFdbBaseObject::CFdbBaseObject(const char* name, CBaseWorker* worker) : mName(name ? name : ""), mWorker(worker) {}

CFdbBaseObject::~CFdbBaseObject() = default;

void CFdbBaseObject::addNotifyItem(CFdbMsgSubscribeList& list, FdbMsgCode_t code, const char* topic) {
    list.emplace_back(code, topic);
}

bool CFdbBaseObject::subscribe(CFdbMsgSubscribeList& list, int32_t /*timeout*/) {
    return mEndpoint->subscription(fdb::FrameKind::Subscribe, list);
}

bool CFdbBaseObject::unsubscribe(CFdbMsgSubscribeList& list) {
    return mEndpoint->subscription(fdb::FrameKind::Unsubscribe, list);
}

bool CFdbBaseObject::send(FdbMsgCode_t code, IFdbMsgBuilder& builder, EFdbQOS /*qos*/) {
    fdb::FrameBuilder frame(fdb::FrameKind::Send, code, 0, nullptr);
    return frame.append(builder) && mEndpoint->send(frame);
}

bool CFdbBaseObject::send(FdbMsgCode_t code, const void* buffer, int32_t size, EFdbQOS /*qos*/) {
    fdb::FrameBuilder frame(fdb::FrameKind::Send, code, 0, nullptr);
    return size >= 0 && frame.append(buffer, static_cast<size_t>(size)) && mEndpoint->send(frame);
}

bool CFdbBaseObject::invoke(FdbMsgCode_t code, IFdbMsgBuilder& builder, int32_t timeout) {
    return mEndpoint->invoke(code, builder, timeout);
}

bool CFdbBaseObject::invoke(FdbSessionId_t receiver, FdbMsgCode_t code, IFdbMsgBuilder& builder) {
    fdb::FrameBuilder frame(fdb::FrameKind::Invoke, code, 0, nullptr);
    return frame.append(builder) && mEndpoint->invoke(receiver, frame);
}

bool CFdbBaseObject::broadcast(FdbMsgCode_t code, IFdbMsgBuilder& builder, const char* topic) {
    fdb::FrameBuilder frame(fdb::FrameKind::Broadcast, code, 0, topic);
    return frame.append(builder) && mEndpoint->broadcast(code, topic, frame);
}

bool CFdbBaseObject::broadcast(FdbMsgCode_t code, const void* buffer, int32_t size, const char* topic) {
    fdb::FrameBuilder frame(fdb::FrameKind::Broadcast, code, 0, topic);
    return size >= 0 && frame.append(buffer, static_cast<size_t>(size)) && mEndpoint->broadcast(code, topic, frame);
}

void CFdbBaseObject::prepareDestroy() {
    mEndpoint->shutdown();
}

void CFdbBaseObject::enableReconnect(bool enable) {
    mEndpoint->enableReconnect(enable);
}
