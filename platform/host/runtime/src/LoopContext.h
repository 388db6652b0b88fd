#pragma once

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>

namespace qvn::host {

struct LoopContext {
    asio::io_context io{1};
    // While nothing waits, the loop runs on.
    asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
};

}  // namespace qvn::host
