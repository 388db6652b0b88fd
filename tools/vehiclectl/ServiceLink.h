#pragma once

#include <common_base/fdbus.h>

#include <memory>
#include <vector>

#include "desk/PropertyNames.h"

namespace qvn::tools {

/// A bus client of the tool's own. It sees two things that the vehicle client does not tell: whether the CAN service is
/// there, and what the service says of the two properties of which the vehicle client makes values from the reverse
/// line. Both go to the PropertyFeed.
class ServiceLink {
public:
    /// Connects in the background. Reads those of the two properties that are among the given ones.
    explicit ServiceLink(const std::vector<const PropertyInfo*>& properties);
    ~ServiceLink();
    ServiceLink(const ServiceLink&) = delete;
    ServiceLink& operator=(const ServiceLink&) = delete;

    bool online() const;

private:
    class Client;

    CBaseWorker worker_;
    std::unique_ptr<Client> client_;
};

}  // namespace qvn::tools
