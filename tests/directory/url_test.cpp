#include "directory/url.h"

#include <gtest/gtest.h>

#include <string>

namespace directory {
namespace {

TEST(Url, SplitsWhatARequestNeeds) {
  struct Case {
    std::string_view address, host;
    int port;
    bool secure;
    std::string_view target;
  };
  const Case cases[] = {
      {"http://a.example", "a.example", 80, false, ""},
      {"HTTP://a.example:8000/x y?q=1&z#part", "a.example", 8000, false, "/x y?q=1&z#part"},
      {"https://a.example/b:80/", "a.example", 443, true, "/b:80/"},
      {"http://user:pw@a.example?q", "a.example", 80, false, "?q"},
      {"http://[::1]:81/;", "::1", 81, false, "/;"},
      {"http://[::1]", "::1", 80, false, ""},
  };
  for (const auto& c : cases) {
    const auto url = splitUrl(c.address);
    ASSERT_TRUE(url) << c.address;
    EXPECT_EQ(url->host, c.host) << c.address;
    EXPECT_EQ(url->port, c.port) << c.address;
    EXPECT_EQ(url->secure, c.secure) << c.address;
    EXPECT_EQ(url->target, c.target) << c.address;
  }
}

TEST(Url, RefusesWhatIsNone) {
  for (const std::string_view address :
       {"", "http:", "http://", "http:///x", "ftp://a/", "file:///etc", "http://a:0/",
        "http://a:65536/", "http://a:8x/", "http://a/x\r\nHost: b", "http://a/\tx", "//a/x",
        "a.example/x"}) {
    EXPECT_FALSE(splitUrl(address)) << address;
  }
}

}  // namespace
}  // namespace directory
