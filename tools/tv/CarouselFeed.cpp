#include "CarouselFeed.h"

using carousel::ObjectCarousel;

void CarouselFeed::start(std::vector<TimedSection> all, uint64_t ticks, size_t budgetBytes)
{
    carousel = carousel::ObjectCarousel(budgetBytes);
    sections = std::move(all);
    next = 0;
    pace = SectionPace(sections.size(), ticks);
}

void CarouselFeed::step(uint64_t tick, std::vector<std::string>& said, std::vector<Answer>& answers)
{
    const size_t due = std::min(sections.size(), pace.dueBy(tick));
    if (next >= due)
        return;
    for (; next < due; ++next) {
        const std::string line = carousel.addSection(sections[next].bytes.data(), sections[next].bytes.size());
        if (!line.empty())
            said.push_back(line);
    }
    for (auto it = waiting.begin(); it != waiting.end();) {
        Answer answer{it->first, false, it->second, ""};
        const ObjectCarousel::Lookup found = carousel.file(it->second, answer.content);
        const bool last = next == sections.size();
        if (found == ObjectCarousel::Lookup::PENDING && !last) {
            ++it;
            continue;
        }
        answer.found = found == ObjectCarousel::Lookup::FOUND;
        answers.push_back(answer);
        it = waiting.erase(it);
    }
}

ObjectCarousel::Lookup CarouselFeed::get(const std::string& path, void* id, std::string& content)
{
    const ObjectCarousel::Lookup found = carousel.file(path, content);
    if (found == ObjectCarousel::Lookup::PENDING)
        waiting[id] = path;
    return found;
}

std::vector<CarouselFeed::Answer> CarouselFeed::abandon()
{
    std::vector<Answer> answers;
    for (const auto& request : waiting)
        answers.push_back({request.first, false, request.second, ""});
    waiting.clear();
    return answers;
}
