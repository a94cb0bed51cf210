// SPDX-License-Identifier: MIT
#pragma once

namespace orvanta {

class ApplicationHost;
class ArchiveTool;
class BackgroundWork;
class Browser;
class ChildProcessLauncher;
class ContentDigest;
class Environment;
class FileManager;
class HttpSessionFactory;
class Identifiers;
class Locations;
class LoginItem;
class MainQueue;
class SerialQueueFactory;
class StandardOutput;
class WallClock;

/// Every way by which the logic reaches the world. The services outlive the logic.
struct Platform {
    MainQueue& mainQueue;
    ChildProcessLauncher& childProcesses;
    HttpSessionFactory& httpSessions;
    SerialQueueFactory& serialQueues;
    FileManager& files;
    Locations& locations;
    Environment& environment;
    WallClock& wallClock;
    LoginItem& loginItem;
    Browser& browser;
    ApplicationHost& application;
    StandardOutput& standardOutput;
    BackgroundWork& backgroundWork;
    ArchiveTool& archiveTool;
    Identifiers& identifiers;
    ContentDigest& contentDigest;
};

} // namespace orvanta
