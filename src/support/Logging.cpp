#include "support/Logging.h"

#include <iostream>

namespace TesmoHbbTV {

std::atomic<Logging*> Logging::instance{nullptr};
Logging::TimeSource Logging::timeSource = nullptr;

Logging::Logging()
{
    if (pthread_mutex_init(&mutex, nullptr) != 0)
        std::cerr << "HbbTV Logging: failed initiating output mutex" << std::endl;
}

Logging::~Logging()
{
    pthread_mutex_lock(&mutex);
    outputs.clear();
    pthread_mutex_unlock(&mutex);
    pthread_mutex_destroy(&mutex);
}

Logging* Logging::getInstance()
{
    if (!instance)
        instance = new Logging();
    return instance;
}

void Logging::destroyInstance()
{
    delete instance;
    instance = nullptr;
}

void Logging::setTimeSource(TimeSource source)
{
    timeSource = source;
}

std::time_t Logging::now()
{
    return timeSource ? timeSource() : std::time(nullptr);
}

bool Logging::wants(LogLevel level)
{
    const Logging* logging = instance;
    return logging && level >= logging->lowestWantedLevel.load(std::memory_order_relaxed);
}

void Logging::addOutput(std::unique_ptr<LoggingOutput> output)
{
    pthread_mutex_lock(&mutex);
    if (output->getMinimumLevel() < lowestWantedLevel)
        lowestWantedLevel = output->getMinimumLevel();
    outputs.push_back(std::move(output));
    pthread_mutex_unlock(&mutex);
}

void Logging::output(LogEntry& entry)
{
    pthread_mutex_lock(&mutex);
    for (auto& out : outputs)
        out->output(entry);
    pthread_mutex_unlock(&mutex);
}

}  // namespace TesmoHbbTV
