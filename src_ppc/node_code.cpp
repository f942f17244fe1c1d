#include "node_code.h"

#include <sstream>

#include "elf_image.h"
#include "listing_writer.h"
#include "misc/stop.h"
#include "node_layout.h"
#include "ppc_decoder.h"

namespace {

[[noreturn]] void cannotRead(const std::string& a_path, const std::string& a_node, const std::string& a_reason)
{
    stopRun("Cannot read the code of node " + a_node + " from " + a_path + ": " + a_reason + "\n");
}

// The node's function symbol: the global one, or the only local one.
const ElfImage::Symbol& nodeSymbol(const ElfImage& a_image, const std::string& a_node)
{
    std::vector<const ElfImage::Symbol*> symbols = a_image.functionsNamed(a_node);
    if (symbols.empty())
        cannotRead(a_image.path(), a_node, "no function symbol of that name");
    if (!symbols[0]->m_global && symbols.size() > 1)
        cannotRead(a_image.path(), a_node, "several local function symbols of that name");
    return *symbols[0];
}

} // namespace

std::string nodeListing(const ElfImage& a_image, const std::string& a_node)
{
    const std::string& path = a_image.path();
    if (!ListingWriter::isListingName(a_node))
        cannotRead(path, a_node, "its name cannot be written in a listing");
    const ElfImage::Symbol& symbol = nodeSymbol(a_image, a_node);
    if (symbol.m_size == 0)
        cannotRead(path, a_node, "its symbol has size 0");
    if (symbol.m_address % 4 != 0 || symbol.m_size % 4 != 0)
        cannotRead(path, a_node, "its symbol does not cover whole aligned instruction words");
    std::string problem;
    ElfImage::Bytes bytes = a_image.sectionBytes(symbol.m_section, symbol.m_address, symbol.m_size, problem);
    if (!problem.empty())
        cannotRead(path, a_node, problem);
    if (!bytes.m_data)
        cannotRead(path, a_node, "its symbol lies outside the contents of its section");

    std::vector<DecodedInstruction> code;
    code.reserve(bytes.m_size / 4);
    for (std::size_t at = 0; at < bytes.m_size; at += 4)
        code.push_back(
            decodeInstruction(bigEndianWord(bytes.m_data + at), symbol.m_address + static_cast<std::uint32_t>(at)));

    ListingWriter writer(a_node, symbol.m_address, [&a_image](std::uint32_t a_address) {
        const ElfImage::Symbol* holder = a_image.functionHolding(a_address);
        if (!holder || !ListingWriter::isListingName(holder->m_name))
            return std::string();
        return ListingWriter::symbolicAddress(holder->m_name, a_address - holder->m_address);
    });
    std::ostringstream text;
    for (const ListingLine& line : layOutNode(code))
        writer.write(text, line);
    return text.str();
}

std::unique_ptr<ElfImage> readNodeImage(FILE* a_file, std::vector<unsigned char> a_start, const std::string& a_path,
                                        const std::string& a_node)
{
    std::string problem;
    std::unique_ptr<ElfImage> image = ElfImage::fromStream(a_file, std::move(a_start), a_path, problem);
    if (!image)
        cannotRead(a_path, a_node, problem);
    return image;
}

std::string nodeListing(FILE* a_file, std::vector<unsigned char> a_start, const std::string& a_path,
                        const std::string& a_node)
{
    return nodeListing(*readNodeImage(a_file, std::move(a_start), a_path, a_node), a_node);
}
