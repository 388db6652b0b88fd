#pragma once

#include <common_base/fdbus.h>

#include <memory>
#include <vector>

#include "desk/PropertyNames.h"

namespace qvn::tools {

/// The CAN service as a bus client of the tool's own sees it. The vehicle client does not tell whether the service is
/// there, and makes values of two properties from the reverse line, which may take the place of what the service said.
/// What comes here goes to the PropertyFeed: it is woken when the service comes or goes.
class ServiceLink {
public:
    /// Connects in the background. Of those two properties, values are fed when they are among the ones given.
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
