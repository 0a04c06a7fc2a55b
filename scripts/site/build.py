#!/usr/bin/python3
"""Builds the site of the reference from docs/reference.

  build.py FOLDER    the folder is made anew

The same pages give the same bytes. Nothing but Python, Pygments and markdown-it is needed.
"""
import re
import shutil
import sys
from collections import defaultdict
from pathlib import Path
from string import Template

sys.dont_write_bytecode = True  # the folders are those of the sources

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))

import registry
from reference import first_sentence
from reference_pages import STEP, SUBJECTS, Faults, check_links, read_pages
from render import Renderer, escaped, plain, slug
from search_index import SearchIndex

THEME = HERE / "theme"
TITLE = "Vell File reference"
LISTS = ("index", "subjects", "functions", "steps", "search")
HOSTS = {"all": "all hosts", "user": "hosts with a user, not servers"}


class SiteError(Exception):
    """The pages cannot become a site."""


def spaced(name):
    """ "Get File Hash" of VlFile_GetFileHash: the words that people look for."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", " ",
                  name.removeprefix("VlFile_"))


def without_properties(path):
    return path.read_text(encoding="utf-8").split("\n---\n", 1)[1]


class Site:
    def __init__(self, target):
        self.target = Path(target)
        self.read()
        self.renderer = Renderer(self.functions, self.link)
        self.page_template = Template((THEME / "page.html").read_text(encoding="utf-8"))
        self.redirect_template = Template((THEME / "redirect.html").read_text(encoding="utf-8"))
        self.index = SearchIndex()

    def read(self):
        faults = Faults()
        self.functions, self.guides = read_pages(faults)
        check_links([*self.functions.values(), *self.guides.values()], faults)
        if faults.lines:
            raise SiteError("\n".join(faults.lines))
        if taken := self.guides.keys() & set(LISTS):
            raise SiteError(f"no page of the guide can be named {', '.join(sorted(taken))}")
        self.rows = defaultdict(list)  # of the registry, by the names of functions
        for row in registry.read_functions():
            self.rows[row.name].append(row)
        self.steps = {row.name: row for row in registry.read_steps()}
        self.check_registry()
        self.by_subject = {subject: [page for page in self.functions.values()
                                     if page.properties["subject"] == subject]
                           for subject in SUBJECTS}

    def check_registry(self):
        described = [step.name for page in self.functions.values() for step in page.steps]
        for kind, pages, rows in (("function", self.functions.keys(), self.rows.keys()),
                                  ("step", set(described), self.steps.keys())):
            if pages != rows:
                raise SiteError(f"registered, or with a page, but not both: the {kind}s "
                                + ", ".join(sorted(pages ^ rows)))

    def link(self, target):
        """The address in the site: all pages stand in one folder, named like their files."""
        if re.match(r"[a-z]+:|#", target):
            return target
        path, mark, anchor = target.partition("#")
        return f"{Path(path).stem}.html{mark}{anchor}"

    # Pieces of pages

    def navigation(self, here):
        """The same on each page, but that the way to this one is open."""
        def item(name, text):
            current = ' aria-current="page"' if name == here else ""
            return f'<li><a href="{name}.html"{current}>{escaped(text)}</a></li>'

        parts = ['<ul>', item("index", "Start"), item("functions", "Functions A to Z"),
                 item("subjects", "Functions by subject"), item("steps", "Script steps"), "</ul>",
                 '<p class="caption">Guide</p>', "<ul>"]
        parts += [item(name, page.title) for name, page in self.ordered_guides()]
        parts += ["</ul>", '<p class="caption">Functions</p>']
        for subject, pages in self.by_subject.items():
            is_open = " open" if any(page.name == here for page in pages) else ""
            parts.append(f"<details{is_open}><summary>{escaped(subject)}</summary><ul>")
            parts += [item(page.name, page.name.removeprefix("VlFile_")) for page in pages]
            parts.append("</ul></details>")
        return "\n".join(parts)

    def ordered_guides(self):
        return sorted(self.guides.items(), key=lambda entry: entry[1].title.lower())

    def contents(self, headings):
        """The list of a page's sections, for wide screens."""
        shown = [heading for heading in headings if heading.level in (2, 3)]
        if len(shown) < 2:
            return ""
        items = "\n".join(f'<li class="level{heading.level}"><a href="#{heading.anchor}">'
                          f"{escaped(heading.text)}</a></li>" for heading in shown)
        return ('<nav class="contents" aria-labelledby="contents-title">'
                '<p class="caption" id="contents-title">On this page</p>'
                f"<ul>\n{items}\n</ul></nav>")

    def write(self, name, title, description, body, headings=()):
        text = self.page_template.substitute(
            site=TITLE, title=escaped(title), description=escaped(description),
            full_title=escaped(title if name == "index" else f"{title} – {TITLE}"),
            name=name, navigation=self.navigation(name), body=body,
            contents=self.contents(headings),
            scripts='<script src="search-index.js"></script>\n<script src="search.js"></script>\n'
            if name == "search" else "")
        (self.target / f"{name}.html").write_text(text, encoding="utf-8")

    # Pages

    def write_guides(self):
        # What explains the codes comes first: the others link to it.
        for name in sorted(self.guides, key=lambda guide: (guide != "result-codes", guide)):
            page = self.guides[name]
            done = self.renderer.render(page.path.read_text(encoding="utf-8"),
                                        explains_codes=name == "result-codes")
            if name == "result-codes":
                self.renderer.codes = {code: f"{name}.html#{anchor}"
                                       for code, anchor in done.rows.items()}
            sentence = plain(self.renderer.inline(first_sentence(page.summary)))
            self.write(name, page.title, sentence, "\n".join(done.parts), done.headings)
            self.index.add_guide(page, sentence, done)

    def facts(self, page):
        properties = page.properties
        subject = properties["subject"]
        facts = [("Subject", f'<a href="subjects.html#{slug(subject)}">{escaped(subject)}</a>'),
                 ("Works on", f'<a href="server.html">{HOSTS[properties["hosts"]]}</a>'),
                 ("Since", f'version {escaped(properties["since"])}')]
        if page.steps:
            facts.append(("Script step" if len(page.steps) == 1 else "Script steps", ", ".join(
                f'<a href="#{self.step_anchor(step.name)}">{escaped(step.name)}</a>'
                for step in page.steps)))
        facts.append(("Also found as", escaped(properties["keywords"])))
        return '<dl class="facts">\n' + "\n".join(
            f"<div><dt>{name}</dt><dd>{value}</dd></div>" for name, value in facts) + "\n</dl>\n"

    def prototypes(self, page):
        text = "\n".join(row.prototype for row in self.rows[page.name])
        return ('<figure class="block prototype"><pre><code>'
                f"{self.renderer.code(text, 'vell')}</code></pre></figure>\n")

    def write_functions(self):
        for page in self.functions.values():
            done = self.renderer.render(without_properties(page.path), here=page.name)
            head, *sections = done.parts
            body = head + self.prototypes(page) + self.facts(page) + "\n".join(sections)
            sentence = self.sentence(page)
            self.write(page.name, page.name, plain(sentence), body, done.headings)
            steps = [(step.name, self.steps[step.name].description,
                      self.step_anchor(step.name)) for step in page.steps]
            self.index.add_function(page, spaced(page.name), plain(sentence), steps,
                                    [row.description for row in self.rows[page.name]], done)

    def sentence(self, page):
        self.renderer.here = page.name
        return self.renderer.inline(first_sentence(page.summary))

    def step_anchor(self, name):
        return slug(f"{STEP}: {name}")

    def function_list(self, pages):
        items = "\n".join(f'<div><dt><a href="{page.name}.html">{page.name}</a></dt>'
                          f"<dd>{self.sentence(page)}</dd></div>" for page in pages)
        return f'<dl class="list">\n{items}\n</dl>\n'

    def write_lists(self):
        self.write_list("subjects", "Functions by subject",
                        "All functions, by what they are about.",
                        {subject: self.function_list(pages)
                         for subject, pages in self.by_subject.items() if pages})
        letters = defaultdict(list)
        for name in sorted(self.functions, key=str.lower):
            letters[name.removeprefix("VlFile_")[0].upper()].append(self.functions[name])
        jumps = " ".join(f'<a href="#{slug(letter)}">{letter}</a>' for letter in letters)
        self.write_list("functions", "Functions A to Z", "All functions, by their names.",
                        {letter: self.function_list(pages) for letter, pages in letters.items()},
                        f'<p class="letters">{jumps}</p>\n')
        self.write_list("steps", "Script steps",
                        "Each script step, and the function that does the same.",
                        {}, self.step_table())
        self.write_list("search", "Search", "Search in all pages of the reference.", {},
                        (THEME / "search.html").read_text(encoding="utf-8"), has_lead=False)
        self.write_list("index", TITLE, "The functions and script steps of Vell File.", {},
                        self.start(), has_lead=False)

    def write_list(self, name, title, lead, sections, before="", has_lead=True):
        lead_html = f'<p class="lead">{escaped(lead)}</p>\n' if has_lead else ""
        body = f"<h1>{escaped(title)}</h1>\n{lead_html}{before}"
        body += "".join(f'<h2 id="{slug(section)}">{escaped(section)}</h2>\n{text}'
                        for section, text in sections.items())
        self.write(name, title, lead, body)

    def step_table(self):
        described = sorted((step.name, page.name) for page in self.functions.values()
                           for step in page.steps)
        lines = ["| script step | what it does | function |", "|---|---|---|"]
        lines += [f"| [{step}]({function}.md#{self.step_anchor(step)}) | "
                  f"{self.steps[step].description} | [{function}]({function}.md) |"
                  for step, function in sorted(described, key=lambda entry: entry[0].lower())]
        return "\n".join(self.renderer.render("\n".join(lines)).parts)

    def start(self):
        subjects = "\n".join(
            f'<li><a href="subjects.html#{slug(subject)}">{escaped(subject)}</a> '
            f'<span class="count">{len(pages)}</span></li>'
            for subject, pages in self.by_subject.items() if pages)
        guides = "\n".join(
            f'<div><dt><a href="{name}.html">{escaped(page.title)}</a></dt>'
            f"<dd>{self.renderer.inline(first_sentence(page.summary))}</dd></div>"
            for name, page in self.ordered_guides())
        return Template((THEME / "start.html").read_text(encoding="utf-8")).substitute(
            functions=len(self.rows), steps=len(self.steps), subjects=subjects, guides=guides)

    def write_help_addresses(self):
        """id/4210.html: the page of the function or step with this number, and id/?4210, which
        leads there: the plug-in's help address is followed by the number."""
        (self.target / "id").mkdir()
        places = {row.id: (name, f"{name}.html") for name in self.functions
                  for row in self.rows[name]}
        for page in self.functions.values():
            for step in page.steps:
                places[self.steps[step.name].id] = (
                    step.name, f"{page.name}.html#{self.step_anchor(step.name)}")
        for number, (name, address) in sorted(places.items()):
            (self.target / "id" / f"{number}.html").write_text(self.redirect_template.substitute(
                name=escaped(name), address=f"../{address}"), encoding="utf-8")
        shutil.copyfile(THEME / "help-address.html", self.target / "id" / "index.html")

    def build(self):
        if self.target.exists():
            shutil.rmtree(self.target)
        self.target.mkdir(parents=True)
        self.write_guides()
        self.write_functions()
        self.write_lists()
        self.write_help_addresses()
        for name in sorted(self.renderer.pictures):
            shutil.copyfile(next(iter(self.guides.values())).path.parent / name, self.target / name)
        (self.target / "search-index.js").write_text(self.index.script(), encoding="utf-8")
        for name in ("site.css", "site.js", "search.js", "icon.svg"):
            shutil.copyfile(THEME / name, self.target / name)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    try:
        site = Site(sys.argv[1])
        site.build()
    except (SiteError, registry.RegistryError) as fault:
        sys.exit(str(fault))
    print(f"{len(site.functions)} functions and {len(site.guides)} pages of the guide")


if __name__ == "__main__":
    main()
