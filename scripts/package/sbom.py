"""sbom.spdx.json: what is inside the plug-in's file, for programs (SPDX 2.3)."""
import hashlib
import json
import re
import time

DOCUMENT = "SPDXRef-DOCUMENT"
PLUGIN = "SPDXRef-VellFile"


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]+", "-", name).strip("-")


def package(spdx_id, name, version, licence, **more):
    return {"SPDXID": spdx_id, "name": name, "versionInfo": version,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": licence, "licenseDeclared": licence,
            "copyrightText": "NOASSERTION", **more}


def component(row, fact):
    return package(identifier(row.name), row.name, fact.version, row.licence,
                   supplier="Organization: Debian", sourceInfo=fact.origin,
                   comment=f"{row.purpose}. Copyright notices: NOTICES.txt",
                   externalRefs=[{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                                  "referenceLocator": fact.locator}])


def sbom(version, plugin, epoch, rows, facts):
    digest = hashlib.sha256(plugin).hexdigest()
    packages = [package(PLUGIN, "Vell File", version, "GPL-2.0-only OR GPL-3.0-only",
                        packageFileName="VellFile.fmx64", primaryPackagePurpose="LIBRARY",
                        supplier="Organization: the Vell File authors",
                        licenseComments="Vell File itself is GPL-2.0-or-later; the file as a "
                                        "whole, with Poppler inside, is not.",
                        checksums=[{"algorithm": "SHA256", "checksumValue": digest}])]
    packages[0]["licenseDeclared"] = "GPL-2.0-or-later"
    packages += [component(row, facts[row.name]) for row in rows]
    relations = [(DOCUMENT, "DESCRIBES", PLUGIN)]
    relations += [(PLUGIN, "CONTAINS" if row.is_data else "STATIC_LINK", identifier(row.name))
                  for row in rows]
    document = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": DOCUMENT,
        "name": f"VellFile-{version}",
        # A name for this document alone: of another file there is another one.
        "documentNamespace": f"https://spdx.org/spdxdocs/VellFile-{version}-{digest[:32]}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(epoch)),
                         "creators": ["Organization: the Vell File authors"]},
        "packages": packages,
        "relationships": [{"spdxElementId": first, "relationshipType": relation,
                           "relatedSpdxElement": second} for first, relation, second in relations],
    }
    return json.dumps(document, indent=2, ensure_ascii=False) + "\n"
