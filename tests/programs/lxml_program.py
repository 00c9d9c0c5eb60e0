"""A document made, searched, transformed and validated; a function of the host as an extension of XPath."""

from lxml import etree

import ling

shop = etree.Element("shop")
for name, price in ling.python.to_python(ling.Map({"pen": 2, "ink": 5})).items():
    etree.SubElement(shop, "item", name=name).text = str(price)
assert shop.xpath("sum(item)") == 7.0

functions = etree.FunctionNamespace("urn:host")
functions["kind"] = lambda _context, value: ling.kind_of(value)
assert shop.xpath("h:kind(string(item[1]))", namespaces={"h": "urn:host"}) == "string"

style = etree.XML(
    '<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">'
    '<xsl:template match="/"><names><xsl:for-each select="shop/item"><xsl:value-of select="@name"/>;</xsl:for-each>'
    "</names></xsl:template></xsl:stylesheet>"
)
assert etree.XSLT(style)(shop).getroot().text == "pen;ink;"
try:
    etree.fromstring("<open>")
except etree.XMLSyntaxError as error:
    print("lxml", error.lineno)
