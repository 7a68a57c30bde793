"""The types that the package declares are those that it has, and everything is explained."""
import ast
import inspect
from pathlib import Path

import pytest

import quillmere
from quillmere import _core

STUBS = ast.parse((Path(quillmere.__file__).parent / "_core.pyi").read_text())


def public(names):
    return {name for name in names if not name.startswith("_")}


def declared(body):
    functions = {node.name for node in body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    return public(functions | {node.target.id for node in body if isinstance(node, ast.AnnAssign)})


CLASSES = {node.name: node for node in STUBS.body if isinstance(node, ast.ClassDef)}


def test_stubs_declare_the_module():
    assert declared(STUBS.body) == public(vars(_core))
    assert public(quillmere.__all__) == public(vars(_core)) | {"head_start"}
    assert (Path(quillmere.__file__).parent / "py.typed").exists()


@pytest.mark.parametrize("name", sorted(CLASSES))
def test_stubs_declare_the_class(name):
    assert declared(CLASSES[name].body) == public(vars(getattr(_core, name)))


def arguments(function):
    """Names of all arguments, as the stub and the signature in the docstring have them."""
    return [argument.arg for argument in (*function.args.args, *function.args.kwonlyargs)]


@pytest.mark.parametrize("function", [node for node in STUBS.body if isinstance(node, ast.FunctionDef)]
                         + [node for name in ("Generator", "Model") for node in CLASSES[name].body
                            if isinstance(node, ast.FunctionDef) and not node.decorator_list], ids=lambda node: node.name)
def test_stubs_declare_the_arguments(function):
    owner = next((name for name, node in CLASSES.items() if function in node.body), None)
    holder = getattr(_core, owner) if owner else _core
    signature = getattr(holder, function.name).__doc__.splitlines()[0]
    parsed = ast.parse(f"def f{signature[signature.index('('):signature.rindex('->')]}: pass".replace("<", "'").replace(
        ">", "'")).body[0]
    assert arguments(parsed) == arguments(function)


def test_everything_is_explained():
    def explained(thing):
        # The first lines are the signature.
        return len((inspect.getdoc(thing) or "").split()) > 2 and "." in inspect.getdoc(thing)

    missing = [name for name in quillmere.__all__
               if not name.startswith("_") and not explained(getattr(quillmere, name))]
    for name in CLASSES:
        members = vars(getattr(_core, name))
        missing += [f"{name}.{member}" for member in public(members) if not explained(members[member])]
    assert missing == []
