// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

namespace nimba::test {

StubDiscoveryTest::~StubDiscoveryTest()
{
    library_.unload();
    stub_library_.reset();
    empty_search_directory();
}

void StubDiscoveryTest::use_stub(const std::string& stub, const std::string& name)
{
    install_stub(stub, name);
    hold_stub(name);
}

void StubDiscoveryTest::hold_stub(const std::string& name, int flags)
{
    stub_library_.emplace(name, flags);
    stub_ = reinterpret_cast<decltype(drm_stub)*>(stub_library_->symbol("drm_stub"))();
    devices_.connect(*stub_);
}

void StubDiscoveryTest::discover_with(const std::string& stub)
{
    use_stub(stub);
    discover();
}

}  // namespace nimba::test
