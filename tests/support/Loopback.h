#pragma once

// Network fixtures never share an address: each test executable binds its own loopback address
// (all of 127/8 is local on Linux) and keeps the service's usual port, so tests can run in parallel.
// One line per executable that needs the network.
namespace Loopback {
inline constexpr const char* checksDns = "127.0.0.2";    // test_checks: NSD on port 53
inline constexpr const char* checksHttps = "127.0.0.3";  // test_checks: the HTTPS API stand-in
inline constexpr const char* checksSilent = "127.0.0.4"; // test_checks: a resolver that never answers
inline constexpr const char* smtp = "127.0.0.11";        // test_smtp: aiosmtpd and scripted servers
inline constexpr const char* engineSmtp = "127.0.0.21";  // test_engine: aiosmtpd and scripted servers
inline constexpr const char* engineDns = "127.0.0.22";   // test_engine: NSD on port 53
inline constexpr const char* durability = "127.0.0.23";  // test_durability: aiosmtpd
inline constexpr const char* screensSmtp = "127.0.0.31"; // GUI tests that send
inline constexpr const char* keychain = "127.0.0.41";    // reserved: test_keychain binds nothing today
inline constexpr const char* benchSmtp = "127.0.0.61";   // bench/smtp: Postfix smtp-sink (bench.sh)
inline constexpr const char* benchEngine = "127.0.0.62"; // bench/engine: Postfix smtp-sink (bench.sh)
} // namespace Loopback
