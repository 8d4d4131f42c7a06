// An item list as an XML document: the serializer beside appending the same texts and tags to a
// string that is large enough from the start, and beside two XML libraries. Floor and libraries are
// told where levels end and check nothing; the libraries escape what has to be.
#include <libxml/xmlwriter.h>

#include <memory>
#include <pugixml.hpp>
#include <sstream>

#include "Bench.h"
#include "ItemTrees.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

using qorbench::CLevelEnd;

struct CCase {
    std::size_t count = 0;
    CItemListOwner items;
    std::vector<CLevelEnd> ends;
    std::size_t bytes = 0;

    void Prepare() {
        if (items.empty()) {
            qorbench::AddDriveItems(items, count);
            ends = qorbench::LevelEnds(items);
            CMngSrv_QorLibMan manager;
            bytes = Serialize(manager);
        }
    }

    std::size_t Serialize(CMngSrv_QorLibMan& manager) {
        char* text = nullptr;
        ItemList* list = &items;
        manager.XmlSerialize(CMngSrv_QorLibMan::TYPE_DISPDATA, "RAID", list, &text);
        return std::string_view(text).size();
    }
};

void AppendElement(std::string& out, const char* open, const char* empty, const char* close,
                   const std::string& text) {
    if (text.empty()) {
        out.append(empty);
    } else {
        out.append(open).append(text).append(close);
    }
}

std::string AppendAll(const CCase& input) {
    std::string out;
    out.reserve(input.bytes);
    out.append("<dispdata><component>RAID</component>");
    auto end = input.ends.begin();
    for (const CItemDisp* item : input.items) {
        out.append("<item>");
        AppendElement(out, "<name>", "<name/>", "</name>", item->ItemName());
        AppendElement(out, "<val>", "<val/>", "</val>", item->ItemValue());
        AppendElement(out, "<enbl>", "<enbl/>", "</enbl>", item->Enable());
        if (end->isLeaf) {
            out.append("<item/>");
        }
        for (unsigned left = end->closed; left > 0; --left) {
            out.append("</item>");
        }
        ++end;
    }
    out.append("</dispdata>");
    return out;
}

const xmlChar* Text(const std::string& text) {
    return text.empty() ? nullptr : reinterpret_cast<const xmlChar*>(text.c_str());
}

const xmlChar* Name(const char* name) {
    return reinterpret_cast<const xmlChar*>(name);
}

void WriteWithLibxml2(const CCase& input) {
    xmlBuffer* buffer = xmlBufferCreate();
    xmlTextWriter* writer = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterStartElement(writer, Name("dispdata"));
    xmlTextWriterWriteElement(writer, Name("component"), Name("RAID"));
    auto end = input.ends.begin();
    for (const CItemDisp* item : input.items) {
        xmlTextWriterStartElement(writer, Name("item"));
        xmlTextWriterWriteElement(writer, Name("name"), Text(item->ItemName()));
        xmlTextWriterWriteElement(writer, Name("val"), Text(item->ItemValue()));
        xmlTextWriterWriteElement(writer, Name("enbl"), Text(item->Enable()));
        if (end->isLeaf) {
            xmlTextWriterWriteElement(writer, Name("item"), nullptr);
        }
        for (unsigned left = end->closed; left > 0; --left) {
            xmlTextWriterEndElement(writer);
        }
        ++end;
    }
    xmlTextWriterEndElement(writer);
    xmlFreeTextWriter(writer);
    benchmark::DoNotOptimize(xmlBufferLength(buffer));
    xmlBufferFree(buffer);
}

class CStringWriter : public pugi::xml_writer {
public:
    void write(const void* data, std::size_t size) override {
        m_Text.append(static_cast<const char*>(data), size);
    }
    std::string m_Text;
};

void AddElement(pugi::xml_node& parent, const char* name, const std::string& text) {
    pugi::xml_node element = parent.append_child(name);
    if (!text.empty()) {
        element.append_child(pugi::node_pcdata).set_value(text.c_str());
    }
}

void WriteWithPugixml(const CCase& input) {
    pugi::xml_document document;
    pugi::xml_node node = document.append_child("dispdata");
    AddElement(node, "component", "RAID");
    auto end = input.ends.begin();
    for (const CItemDisp* item : input.items) {
        node = node.append_child("item");
        AddElement(node, "name", item->ItemName());
        AddElement(node, "val", item->ItemValue());
        AddElement(node, "enbl", item->Enable());
        if (end->isLeaf) {
            node.append_child("item");
        }
        for (unsigned left = end->closed; left > 0; --left) {
            node = node.parent();
        }
        ++end;
    }
    CStringWriter writer;
    document.save(writer, "", pugi::format_raw | pugi::format_no_declaration);
    benchmark::DoNotOptimize(writer.m_Text.size());
}

template <class Work>
void RegisterCase(const std::string& name, const std::shared_ptr<CCase>& input, int repetitions,
                  Work work) {
    const int iterations = input->count < 10'000 ? 100 : 1;
    qorbench::Register(name, iterations, repetitions, [=](benchmark::State& state) {
        input->Prepare();
        qorbench::TimeEach(
            state, qorbench::CpuSeconds, [&] { work(*input); }, [] {});
    });
}

}  // namespace

int main(int argc, char** argv) {
    for (const std::size_t count : {1'000U, 100'000U, 1'000'000U}) {
        const std::string name = "xml/" + std::to_string(count) + " items";
        const auto input = std::make_shared<CCase>();
        input->count = count;
        const int repetitions = count < 1'000'000 ? 15 : 5;
        RegisterCase(name + "/ours", input, repetitions, [](CCase& data) {
            CMngSrv_QorLibMan manager;
            data.Serialize(manager);
        });
        RegisterCase(name + "/floor", input, repetitions,
                     [](CCase& data) { benchmark::DoNotOptimize(AppendAll(data).size()); });
        RegisterCase(name + "/peer:libxml2", input, repetitions,
                     [](CCase& data) { WriteWithLibxml2(data); });
        RegisterCase(name + "/peer:pugixml", input, repetitions,
                     [](CCase& data) { WriteWithPugixml(data); });
    }
    return qorbench::RunAll(argc, argv);
}
