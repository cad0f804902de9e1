#pragma once

// Network fixtures never share an address: each test executable binds its own loopback address
// (all of 127/8 is local on Linux) and keeps the service's usual port, so tests can run in parallel.
// One line per executable that needs the network.
namespace Loopback {
inline constexpr const char* checksDns = "127.0.0.2";      // test_checks: NSD on port 53
inline constexpr const char* checksHttps = "127.0.0.3";    // test_checks: the HTTPS API stand-in
inline constexpr const char* checksSilent = "127.0.0.4";   // test_checks: a resolver that never answers
inline constexpr const char* smtp = "127.0.0.11";          // test_smtp: aiosmtpd and scripted servers
inline constexpr const char* engineSmtp = "127.0.0.21";    // test_engine: aiosmtpd and scripted servers
inline constexpr const char* engineDns = "127.0.0.22";     // test_engine: NSD on port 53
inline constexpr const char* durability = "127.0.0.23";    // test_durability: aiosmtpd
inline constexpr const char* screensSmtp = "127.0.0.31";   // test_dashboard
inline constexpr const char* settingsSmtp = "127.0.0.32";  // test_settings_screen: aiosmtpd
inline constexpr const char* settingsDns = "127.0.0.33";   // test_settings_screen: NSD on port 53
inline constexpr const char* settingsHttps = "127.0.0.34"; // test_settings_screen: the Brevo API stand-in
inline constexpr const char* templatesSmtp = "127.0.0.35"; // test_templates_screen: aiosmtpd
inline constexpr const char* campaignsSmtp = "127.0.0.36"; // test_campaigns_screen: aiosmtpd
inline constexpr const char* campaignsDns = "127.0.0.37";  // test_campaigns_screen: NSD on port 53
inline constexpr const char* journeySmtp = "127.0.0.38";   // test_journey: aiosmtpd
inline constexpr const char* journeyDns = "127.0.0.39";    // test_journey: NSD on port 53
inline constexpr const char* keychain = "127.0.0.41";      // reserved: test_keychain binds nothing today
inline constexpr const char* benchSmtp = "127.0.0.61";     // bench/smtp: Postfix smtp-sink (bench.sh)
inline constexpr const char* benchEngine = "127.0.0.62";   // bench/engine: Postfix smtp-sink (bench.sh)
inline constexpr const char* benchHistory = "127.0.0.63";  // bench/history: Postfix smtp-sink (bench.sh)
inline constexpr const char* benchDelivery = "127.0.0.64"; // bench/delivery: Postfix smtp-sink and the peers (bench.sh)
inline constexpr const char* benchCampaigns = "127.0.0.65"; // bench/campaigns: Postfix smtp-sink (bench.sh)
} // namespace Loopback
